#pragma once

#include <gtest/gtest.h>
#include <chrono>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>

#include "tests/system/TestSkin.h"
#include "tests/system/XServer.h"

namespace systest {

using Json = nlohmann::json;

// How the program draws. Software is SDL's own renderer; OpenGL is what the program asks for, here by Mesa.
enum class Renderer { Software, OpenGL };

// The bound of a wait in milliseconds, longer where a sanitizer slows everything down.
int bound(int milliseconds);

// True as soon as the condition holds, false when it does not within bound(milliseconds).
bool within(int milliseconds, const std::function<bool()>& condition);

// A running kslsim with its control port. Used by one thread.
class SimulatorProcess {
 public:
  // On the given port, which can be that of an earlier one. False when it is taken.
  bool start(const std::string& folder, int port);

  // On a free port that can be taken again once this one has ended.
  bool startAnywhere(const std::string& folder);

  int port() const { return mPort; }
  std::string address() const { return "127.0.0.1:" + std::to_string(mPort); }

  // Does one step, now. A step that is refused fails the test.
  void apply(const Json& step);

  Json state();

  // What has happened since entry n.
  Json log(uint64_t n);

  // Calls of the method since the start, however they were answered.
  int calls(const std::string& method);

  // When each refused call came, in milliseconds since the start.
  std::vector<int64_t> refusals();

  // The "n" of the latest entry.
  uint64_t latest();

  Process& process() { return mProcess; }

 private:
  Json get(const std::string& path);

  Process mProcess;
  int mPort = 0, mControlPort = 0;
};

// The whole system: an X server, a folder with the test skin, and on demand the simulator and the program. All of
// it is gone when the fixture is; after a failure the program's log and the screen are shown and kept.
class SystemTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // The X server of the test; one screen unless a test says otherwise.
  virtual bool startX() { return mX.start(mFolder); }

  // Starts the simulator on a free port, which can be taken again once it has ended.
  void startSimulator();

  // The same, but every call is refused: as good as no service, and the attempts are counted.
  void startRefusing();

  // Starts the program with this address as its argument; with no argument when empty. The environment adds to and
  // overrides the usual one; a variable with the value "-" is left out.
  void startProgram(const std::string& address, Renderer renderer,
                    const std::map<std::string, std::string>& environment);

  // The same for another process than mProgram, whose output goes to that file; closed when empty.
  void startProgram(Process& process, const std::string& output, const std::string& address, Renderer renderer,
                    const std::map<std::string, std::string>& environment);

  // Simulator with one level of this pot, then the program on it, until the panel stands.
  void startUntilPanel(Renderer renderer, int64_t pot);

  // The same until the digits have come to a stand at that pot, which takes four seconds unless it is 0.
  void startWithPanel(Renderer renderer, int64_t pot);

  // The program as it was built.
  static std::string programFile();

  // The dated log file, and what the program has printed.
  std::string log() const;
  std::string printed() const { return contentOf(mFolder + "/program.txt"); }

  // Lines of the log that hold the text.
  int logged(const std::string& text) const;

  // Frames of a logged backtrace that stand in sources of ours, the crash path's own apart. A backtrace has 20
  // frames, so the outermost ones may be missing.
  int framesNamed() const;

  // The program has ended within the bound with this exit code.
  testing::AssertionResult exitsWith(int milliseconds, int code);

  // The program asks for events at least as many times more, from now on.
  bool asksForEvents(int times);

  // The program's own handler takes this signal, and no child of it runs that could mean otherwise.
  bool handles(int signal) const;

  // What is on the screen.
  bool loaderShown();
  bool panelShown();

  // The number that the digits of level 0 show, when that level is the only one and has no decimal places; -1 while
  // a digit is between two positions.
  int64_t shownPot();

  std::string mFolder;
  std::string mProgramFile;  // the program under test, unless a test copies it
  XServer mX;
  SimulatorProcess mSimulator;
  Process mProgram;
};

// The system once for each renderer.
class SystemRendererTest : public SystemTest, public testing::WithParamInterface<Renderer> {};

std::string rendererName(const testing::TestParamInfo<Renderer>& info);

}  // namespace systest
