#pragma once

#include <string>
#include <vector>

#include "tests/support/ComponentPeek.h"
#include "tests/vesperatopscreen/JackpotsPanelFixture.h"

// The jackpot panel alone, with levels whose status the test changes.
namespace jackpottest {

using paneldata::levels;
using Names = std::vector<std::string>;

class JackpotStates : public JackpotsPanel {
 protected:
  void start(int count) {
    data = levels(count);
    show(data);
  }
  void status(int id, const char* text) {
    data[static_cast<size_t>(id)].status = text;
    show(data);
  }
  // From the notice to the frame that starts the win.
  void startWin(int id) {
    status(id, "WIN");
    clock.advance(201);
    harness.frame();
    ASSERT_TRUE(visible("pDarkBackground"));
  }
  TTimedTaskHandler* task() { return harness.application().GetTimedTask(panel); }
  bool drawn(TTimedTaskHandler* handler) { return harness.application().IsTimedTaskValid(handler, TASK_DRAW); }
  void endTheSparkle() {
    panel->StopIdleAnimation();
    ASSERT_EQ(nullptr, task());
  }
  SDL_Rect winPlace() { return find("JackpotWinPanel")->getDestRect(); }
  TSpriteAnimation& sprite(int id, const char* name) { return *part<TSpriteAnimation>(id, name); }
  bool historyShown(int id) {
    const bool text = part(id, "pJackpotInfo")->isVisible(), bar = part(id, "pJackpotInfoBackground")->isVisible();
    EXPECT_EQ(text, bar);
    return text && bar;
  }

  std::vector<JackpotsData> data;
};

}  // namespace jackpottest
