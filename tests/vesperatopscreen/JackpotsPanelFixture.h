#pragma once

#include <errno.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/FakeClock.h"
#include "tests/support/PanelSkin.h"
#include "tests/support/TopScreenHarness.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vesperatopscreen/TJackpotsPanel.h"

// The jackpot panel alone, without the screen around it: it is told its data by the test.
namespace jackpottest {

using namespace vendelo_sdl2;

class JackpotsPanel : public testing::Test {
 protected:
  JackpotsPanel() : JackpotsPanel(1920, 1080) {}
  // The screen is drawn at a quarter of its size; all places are those of the full one.
  JackpotsPanel(int width, int height) : clock(100000), harness(width / kDivisor, height / kDivisor) {
    SDL_RenderSetScale(harness.renderer(), 1.0f / kDivisor, 1.0f / kDivisor);
    MyUtils::SetImageDir(skin());
    MyUtils::decimal_separator = ',';
    MyUtils::thousand_separator = '.';
    MyUtils::thousand_grouping[0] = 3;
    lines().clear();
    harness.application().TLogManager::Init("", keepLine, nullptr, false);
    harness.application().SetOutputToConsole(false);
    panel = harness.add(new TJackpotsPanel(harness.renderer(), 0, 0, width, height, "pJackpotsPanel"));
  }

  // Data as the main thread gives them, so that what is meant for the draw thread waits for the next frame.
  int update(const std::vector<JackpotsData>& data, const std::string& error) {
    int result = -1;
    onMainThread([&] { result = panel->UpdateData(data, error); });
    return result;
  }
  void integrity(const std::string& text) {
    onMainThread([&] { panel->SetIntegrityCheckData(text); });
  }
  // New data arrive, and a frame is drawn.
  int show(const std::vector<JackpotsData>& data) {
    const int result = update(data, "");
    harness.frame();
    return result;
  }
  void framesFor(Uint32 milliseconds) {
    for (Uint32 passed = 0; passed < milliseconds; passed += 20) {
      clock.advance(20);
      harness.frame();
    }
  }
  template <class T = TGuiComponent>
  T* find(const std::string& name) {
    return dynamic_cast<T*>(panel->FindComponentByName(name));
  }
  template <class T = TGuiComponent>
  T* part(int id, const char* name) {
    const std::string index = "[" + std::to_string(id) + "]";
    TGuiComponent* container = find("pJackpotPanel" + index);
    return container ? dynamic_cast<T*>(container->FindComponentByName(name + index)) : nullptr;
  }
  bool visible(const char* name) { return find(name)->isVisible(); }
  size_t linesWith(const char* text) {
    harness.application().TLogManager::Poll();
    size_t count = 0;
    for (const std::string& line : lines()) count += line.find(text) != std::string::npos;
    return count;
  }
  // The colour at a place of the full screen.
  Uint32 pixel(int x, int y) { return harness.pixel(x / kDivisor, y / kDivisor); }
  // The folder of the pictures, written once for the process, whose name it bears.
  static const std::string& skin() {
    static const std::string& folder = *new std::string(
      panelskin::write(std::string("jackpots_") + program_invocation_short_name) + "VESPERA/TOP_SKIN/");
    return folder;
  }

  static constexpr int kDivisor = 4;
  FakeClock clock;
  WidgetHarness harness;
  TJackpotsPanel* panel;

 private:
  template <class F>
  void onMainThread(const F& step) {
    std::thread(step).join();
  }
  static std::vector<std::string>& lines() {
    static std::vector<std::string>& kept = *new std::vector<std::string>;
    return kept;
  }
  static void keepLine(void*, const TLogEntry& entry, int) { lines().push_back(entry.Message); }
};

}  // namespace jackpottest
