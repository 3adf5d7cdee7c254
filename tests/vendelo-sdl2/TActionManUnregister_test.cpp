#include "tests/vendelo-sdl2/TActionManFixture.h"

using namespace bustest;

namespace {

// Unregistering.

TEST(Unregister, AnActionByName) {
  Bus bus;
  bus.listen("abcd", "x");
  EXPECT_EQ(bus.UnregisterAction("", true), -1);
  EXPECT_EQ(bus.UnregisterAction("abcde", true), -1);
  EXPECT_EQ(bus.UnregisterAction("abcd", true), 0);
  EXPECT_EQ(bus.GetAction("abcd"), nullptr);
  EXPECT_EQ(bus.UnregisterAction("abcd", true), -1);
}

TEST(Unregister, AnActionByPointerWithAndWithoutItsInstance) {
  Bus bus;
  bus.UnregisterAction(static_cast<TAction*>(nullptr), true);
  TAction* action = bus.listen("abcd", "x");
  bus.UnregisterAction(action, false);
  EXPECT_EQ(bus.GetAction("abcd"), nullptr);
  EXPECT_EQ(action->GetName(), "abcd") << "the caller's now";
  // Not in the list any more and deleted all the same; LeakSanitizer and its like watch.
  bus.UnregisterAction(action, true);
  TAction* nameless = bus.listen("", "x");
  bus.UnregisterAction(nameless, true);
}

TEST(Unregister, QueuedRunsOfADeletedActionAreDropped) {
  Bus bus;
  bus.listen("gone", "g");
  bus.listen("stays", "s");
  bus.GenerateAction("gone", nullptr, ACTION_ANY);
  bus.GenerateAction("stays", nullptr, ACTION_ANY);
  bus.GenerateAction("gone", nullptr, ACTION_ANY);
  bus.ProcessActions();
  bus.UnregisterAction("gone", true);
  bus.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(bus.ran, "s");
}

TEST(Unregister, AHandlerOfAllActionsIsDeletedOnce) {
  Bus bus;
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  TAction* action = bus.AddActionListener("abcd", handler, ACTION_NORMAL);
  bus.listen("efgh", "x");
  EXPECT_EQ(bus.UnregisterAllActionHandlers(handler, true), 0);
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(bus.UnregisterAllActionHandlers(nullptr, true), 0);
}

TEST(Unregister, AHandlerOnTwoActionsIsDeletedOnce) {
  Bus bus;
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  bus.AddActionListener("abcd", handler, ACTION_NORMAL);
  bus.AddActionListener("efgh", handler, ACTION_DRAW);
  bus.UnregisterAllActionHandlers(handler, true);
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(bus.GetAction("abcd")->GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(bus.GetAction("efgh")->GetHandlersCount(ACTION_ANY), 0);
}

TEST(Unregister, AHandlerOfOneActionEveryOccurrenceByFilter) {
  TAction action("abcd");
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  action.RegisterActionHandler(handler, ACTION_NORMAL);
  action.RegisterActionHandler(handler, ACTION_NORMAL);
  action.RegisterActionHandler(handler, ACTION_DRAW);
  action.RegisterActionHandler(nullptr, ACTION_DRAW);
  EXPECT_EQ(action.GetHandlersCount(ACTION_ANY), 3);
  EXPECT_EQ(action.UnregisterActionHandler(handler, false, ACTION_NORMAL), 0);
  EXPECT_EQ(action.GetHandlersCount(ACTION_NORMAL), 0);
  EXPECT_EQ(action.GetHandlersCount(ACTION_DRAW), 1);
  EXPECT_EQ(action.UnregisterActionHandler(handler, true, ACTION_ANY), 0);
  EXPECT_EQ(action.GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(deaths, 1);
  // One type alone is enough for the deletion.
  handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  action.RegisterActionHandler(handler, ACTION_DRAW);
  EXPECT_EQ(action.UnregisterActionHandler(handler, true, ACTION_DRAW), 0);
  EXPECT_EQ(action.GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(deaths, 2);
  EXPECT_EQ(action.UnregisterActionHandler(nullptr, true, ACTION_DRAW), 0);
  // Deleted although it was found nowhere.
  EXPECT_EQ(action.UnregisterActionHandler(new Mortal(deaths, Handler::ahtExecuteOnce), true, ACTION_NORMAL), 0);
  EXPECT_EQ(deaths, 3);
  EXPECT_EQ(action.UnregisterActionHandler(new Mortal(deaths, Handler::ahtExecuteOnce), true, ACTION_ANY), 0);
  EXPECT_EQ(deaths, 4);
}

TEST(Unregister, HandlersByTheirRelatedObject) {
  Bus bus;
  Target one;
  Target two;
  for (auto* target : {&one, &two, &one})
    bus.AddActionListener("abcd", new TahMember<Target, int>(target, &Target::small, Handler::ahtExecuteEndless),
                          ACTION_NORMAL);
  TAction* action = bus.GetAction("abcd");
  EXPECT_EQ(action->UnregisterActionHandlersByRelatedObject(&one, true), 2);
  EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 1);
  EXPECT_EQ(bus.UnregisterAllActionHandlersByRelatedObject(&two, true), 0);
  EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 0);
  bus.fire("abcd");
  EXPECT_EQ(one.calls + two.calls, 0);
}

TEST(Unregister, HandlersTakenOutWithoutTheirInstanceAreTheCallers) {
  TAction action("abcd");
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  action.RegisterActionHandler(handler, ACTION_NORMAL);
  action.RegisterActionHandler(handler, ACTION_THREAD_SAFE);
  EXPECT_EQ(action.UnregisterActionHandlersByRelatedObject(&deaths, true), 0);
  EXPECT_EQ(action.UnregisterActionHandlersByRelatedObject(nullptr, false), 2);
  EXPECT_EQ(action.GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(deaths, 0);
  delete handler;
}

TEST(Unregister, AnAsynchronousHandlerIsNotFoundByItsOwnPointer) {
  TAction action("abcd");
  Target target;
  auto* handler = new TahMember<Target, int>(&target, &Target::small, Handler::ahtExecuteEndless);
  action.RegisterActionHandler(handler, ACTION_ASYNC);
  action.UnregisterActionHandler(handler, false, ACTION_ANY);
  EXPECT_EQ(action.GetHandlersCount(ACTION_ASYNC), 1);
  // Nor by the object: the wrapper knows the user data only.
  EXPECT_EQ(action.UnregisterActionHandlersByRelatedObject(&target, true), 0);
  int user = 0;
  action.RegisterActionHandler(
    new TahMemberLarge<Target>(&target, &Target::large, &user, Handler::ahtExecuteEndless), ACTION_ASYNC);
  EXPECT_EQ(action.UnregisterActionHandlersByRelatedObject(&user, true), 1);
}

TEST(Unregister, TheManagersEndDeletesHandlersOfEveryType) {
  int deaths = 0;
  {
    Bus bus;
    for (const auto type : {ACTION_NORMAL, ACTION_DRAW, ACTION_THREAD_SAFE, ACTION_ASYNC})
      bus.AddActionListener("abcd", new Mortal(deaths, Handler::ahtExecuteEndless), type);
    bus.GenerateAction("abcd", nullptr, ACTION_ANY);
    bus.ProcessActions();
    bus.GenerateAction("abcd", nullptr, ACTION_ANY);
  }
  EXPECT_EQ(deaths, 4);
}

TEST(Unregister, AHandlerOnTwoActionsIsDeletedOnceByItsObject) {
  for (const bool deleted : {true, false}) {
    Bus bus;
    int deaths = 0;
    int object = 0;
    auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless, &object);
    auto* second = new Mortal(deaths, Handler::ahtExecuteEndless, &object);
    bus.AddActionListener("abcd", handler, ACTION_NORMAL);
    bus.AddActionListener("efgh", handler, ACTION_DRAW);
    bus.AddActionListener("efgh", second, ACTION_THREAD_SAFE);
    bus.listen("efgh", "stays");
    EXPECT_EQ(bus.UnregisterAllActionHandlersByRelatedObject(&object, deleted), 0);
    EXPECT_EQ(deaths, deleted ? 2 : 0);
    EXPECT_EQ(bus.GetAction("abcd")->GetHandlersCount(ACTION_ANY), 0);
    EXPECT_EQ(bus.GetAction("efgh")->GetHandlersCount(ACTION_ANY), 1);
    EXPECT_EQ(bus.fire("efgh"), "stays");
    if (deleted) continue;
    delete handler;
    delete second;
  }
}

TEST(Unregister, AHandlerOfAllActionsWithoutItsInstanceIsTheCallers) {
  Bus bus;
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  bus.AddActionListener("abcd", handler, ACTION_NORMAL);
  bus.AddActionListener("efgh", handler, ACTION_DRAW);
  EXPECT_EQ(bus.UnregisterAllActionHandlers(handler, false), 0);
  EXPECT_EQ(deaths, 0);
  EXPECT_EQ(bus.GetAction("abcd")->GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(bus.GetAction("efgh")->GetHandlersCount(ACTION_ANY), 0);
  delete handler;
}

TEST(Unregister, AForeignActionOfARegisteredNameLeavesTheRegisteredOneAlone) {
  Bus bus;
  TAction* const registered = bus.listen("abcd", "x");
  bus.GenerateAction("abcd", nullptr, ACTION_ANY);
  bus.ProcessActions();
  int deaths = 0;
  auto* foreign = new TAction("abcd");
  foreign->RegisterActionHandler(new Mortal(deaths, Handler::ahtExecuteEndless), ACTION_NORMAL);
  bus.UnregisterAction(foreign, false);
  EXPECT_EQ(deaths, 0);
  EXPECT_EQ(bus.GetAction("abcd"), registered);
  bus.UnregisterAction(foreign, true);
  EXPECT_EQ(deaths, 1) << "deleted, though it was not in the list";
  EXPECT_EQ(bus.GetAction("abcd"), registered);
  bus.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(bus.ran, "x") << "what waited for the registered one still runs";
  EXPECT_EQ(bus.fire("abcd"), "x");
}

TEST(Unregister, AnActionGoesWithItsHandlersOnlyWhenAsked) {
  for (const bool byName : {true, false}) {
    Bus bus;
    int deaths = 0;
    TAction* action = bus.AddActionListener("abcd", new Mortal(deaths, Handler::ahtExecuteEndless), ACTION_NORMAL);
    bus.AddActionListener("efgh", new Mortal(deaths, Handler::ahtExecuteEndless), ACTION_NORMAL);
    if (byName)
      EXPECT_EQ(bus.UnregisterAction("abcd", false), 0);
    else
      bus.UnregisterAction(action, false);
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(bus.GetAction("abcd"), nullptr);
    bus.fire("abcd");
    EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 1) << "the caller's now";
    delete action;
    EXPECT_EQ(deaths, 1);
    if (byName)
      EXPECT_EQ(bus.UnregisterAction("efgh", true), 0);
    else
      bus.UnregisterAction(bus.GetAction("efgh"), true);
    EXPECT_EQ(deaths, 2);
  }
}

TEST(Unregister, QueuedRunsOfAnActionThatWasOnlyTakenOutAreDroppedToo) {
  Bus bus;
  TAction* action = bus.listen("gone", "g", ACTION_DRAW);
  bus.GenerateAction("gone", nullptr, ACTION_ANY);
  bus.ProcessActions();
  bus.UnregisterAction(action, false);
  bus.ExecuteActions(ACTION_DRAW);
  EXPECT_EQ(bus.ran, "");
  delete action;
}

}  // namespace
