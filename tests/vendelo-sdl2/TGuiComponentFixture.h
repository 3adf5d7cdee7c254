#pragma once

#include <gtest/gtest.h>
#include <functional>
#include <string>
#include <vector>

#include "vendelo-sdl2/TGuiComponent.h"

// What the tests of the component base share.
namespace guitest {

using namespace vendelo_sdl2;

// Writes down what happens to it.
class Probe : public TGuiComponent {
 public:
  Probe(const std::string& name, std::vector<std::string>& log)
    : TGuiComponent(nullptr, 1, 2, 30, 40, name), mLog(log) {}
  ~Probe() override { mLog.push_back("~" + mName); }

  int load() override {
    mLog.push_back("load " + mName);
    return mLoadResult;
  }
  void draw() override {
    mLog.push_back("draw " + mName + " " + std::to_string(mAlpha));
    if (mOnDraw) mOnDraw();
    TGuiComponent::draw();
  }
  void drawLogic() override {
    mLog.push_back("logic " + mName);
    if (mOnLogic) mOnLogic();
    TGuiComponent::drawLogic();
  }
  void mainLogic() override {
    mLog.push_back("main " + mName);
    TGuiComponent::mainLogic();
  }
  void onShow() override { mLog.push_back(std::string("onShow ") + (mVisible ? "visible" : "hidden")); }
  void onHide() override { mLog.push_back(std::string("onHide ") + (mVisible ? "visible" : "hidden")); }

  const TAnimation& fade() const { return mFadeAnimation; }
  TAnimation& fade() { return mFadeAnimation; }
  bool fadingIn() const { return mFadingIn; }
  bool fadingOut() const { return mFadingOut; }
  bool increaseX() const { return mIncreaseX; }
  bool increaseY() const { return mIncreaseY; }
  std::vector<std::string> children() const {
    std::vector<std::string> names;
    for (const TGuiComponent* child : GuiComponentList) names.push_back(child->getName());
    return names;
  }

  int mLoadResult = 0;
  std::function<void()> mOnDraw, mOnLogic;

 private:
  std::vector<std::string>& mLog;
};

using Names = std::vector<std::string>;

class GuiComponent : public testing::Test {
 protected:
  Probe* probe(const std::string& name) { return new Probe(name, log); }
  Probe* child(const std::string& name) {
    Probe* made = probe(name);
    root.AddComponent(made);
    return made;
  }
  // The log since the last call.
  Names take() {
    Names taken;
    taken.swap(log);
    return taken;
  }

  std::vector<std::string> log;
  Probe root{"root", log};
};

inline std::string printed(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

}  // namespace guitest
