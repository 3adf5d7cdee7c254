// What the screen does when the service answers badly.
#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

class Replies : public SystemTest {};

TEST_F(Replies, BadOnesCostOneLineEachAndTheScreenGoesOn) {
  const char* transport = "1 - sendInternal(): Connection failed";
  const char* parsing = "-500 - Parsing of game.popEvents response failed.";
  const struct {
    const char* reply;
    int calls;  // an HTTP client tries again by itself where a kept connection was shut
    const char* line;
  } rows[] = {{"refuse", 2, transport},  {"http500", 1, transport},
              {"html", 1, transport},    {"cut", 1, transport},
              {"large", 1, transport},   {"deep", 1, transport},
              {"i8", 1, transport},      {"type", 1, parsing},
              {"empty", 1, parsing},     {"fault", 1, "-4 - %s%n not supported"},
              {"rpcfault", 1, "-500 - "}};
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  const auto errors = [this] { return logged("KSL CLIENT: Received error"); };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.reply);
    const std::string line = std::string("KSL CLIENT: Received error from game.popEvents -> ") + row.line;
    const int lines = logged(line), before = errors();
    Json step{{"do", "bad"}, {"method", "game.popEvents"}, {"reply", row.reply}, {"calls", row.calls}};
    if (std::string(row.reply).ends_with("fault")) step.update({{"code", -4}, {"text", "%s%n not supported"}});
    mSimulator.apply(step);
    EXPECT_TRUE(within(20000, [&] { return logged(line) > lines; }));
    EXPECT_TRUE(asksForEvents(2));
    EXPECT_EQ(errors(), before + 1);
    EXPECT_EQ(shownPot(), 0);
  }
  EXPECT_EQ(mSimulator.calls("topscreen.init"), 1) << "the registration was lost";
  mSimulator.apply({{"do", "pot"}, {"id", 0}, {"value", 222222}});
  EXPECT_TRUE(within(10000, [this] { return shownPot() == 222222; })) << shownPot();
}

}  // namespace
}  // namespace systest
