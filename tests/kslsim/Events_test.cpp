// The way of a change into an event, and of the event into what a peer knows.
#include <gtest/gtest.h>

#include "tools/kslsim/Platform.h"

namespace kslsim {
namespace {

std::vector<int> idsOf(const std::vector<PlatformEvent>& events) {
  std::vector<int> out;
  for (const PlatformEvent& event : events) out.push_back(event.id);
  return out;
}

const Json GAME{{"ID", 7}, {"Name", "Fruits"}, {"Type", 4}};

// A value of the field that no other state here has.
Json otherThan(const Json& value) {
  if (value.is_boolean()) return !value.get<bool>();
  if (value.is_number()) return value.get<int64_t>() + 1;
  if (value.is_string()) return value.get<std::string>() + "x";
  if (value.is_array()) return Json::array();
  return {{"one", 1}};
}

TEST(Events, EveryFieldThatIsSetReachesAPeerByOneEvent) {
  for (const Field& field : stateFields()) {
    Platform platform;
    platform.addLevel(Json::object(), -1, "");
    platform.set({{"Instructions", {"some"}}}, "");
    platform.takeEvents();
    Json peer = platform.state();
    const Json before = peer;
    platform.set({{field.name, field.kind == Kind::Game ? GAME : otherThan(peer[field.name])}}, "");
    const auto events = platform.takeEvents();
    ASSERT_EQ(events.size(), 1u) << field.name;
    EXPECT_EQ(events[0].kind, contextKind(events[0].id));
    Platform::applyTo(peer, events[0]);
    EXPECT_NE(peer[field.name], before[field.name]) << field.name;
    EXPECT_EQ(peer, platform.state()) << field.name;
  }
}

TEST(Events, GameThatComesAndGoesReachesAPeer) {
  for (const bool wasLoading : {false, true}) {
    for (const EventRow& row : eventRows()) {
      if (!row.game) continue;
      Platform platform;
      platform.set({{"ActiveGame", {{"ID", 1}, {"Name", "Before"}, {"Type", 3}}}, {"IsLoading", wasLoading}}, "");
      platform.takeEvents();
      Json peer = platform.state();
      const bool leaves = row.id == 105;
      platform.game(row, leaves ? Json() : GAME, "");
      const auto events = platform.takeEvents();
      ASSERT_EQ(idsOf(events), std::vector<int>{row.id});
      EXPECT_EQ(events[0].context, leaves ? Json() : GAME);
      EXPECT_EQ(platform.state()["ActiveGame"], leaves ? startOf(gameFields()) : GAME);
      EXPECT_EQ(platform.state()["IsLoading"], row.id == 100);
      Platform::applyTo(peer, events[0]);
      EXPECT_EQ(peer, platform.state()) << row.name;
    }
  }
}

TEST(Events, OneStepTellsOfItsFieldsInTheOrderOfTheStateAndOfTheGameLast) {
  Platform platform;
  const Json state = platform.state();
  platform.set(state, "");
  EXPECT_EQ(idsOf(platform.takeEvents()), (std::vector<int>{103, 107, 112, 102, 106, 104, 111, 110, 108, 101}));
  platform.set({{"IsLoading", true}, {"JackpotErrorString", ""}, {"MaxBet", 5}, {"MinBet", 5}}, "");
  EXPECT_EQ(idsOf(platform.takeEvents()), (std::vector<int>{104, 108, 100}));
}

TEST(Events, EventsOfAnotherFormOrUnknownOnesLeaveAPeerAlone) {
  Platform platform;
  const Json before = platform.state();
  Json peer = before;
  for (const EventRow& row : eventRows()) Platform::applyTo(peer, {row.id, Kind::Any, row.sample});
  for (int id : {0, 99, 113}) Platform::applyTo(peer, {id, contextKind(id), true});
  Platform::applyTo(peer, {109, Kind::Nil, nullptr});
  EXPECT_EQ(peer, before);
  Json nobody = nullptr;
  Platform::applyTo(nobody, {102, Kind::Bool, true});
  EXPECT_EQ(nobody, nullptr);
}

}  // namespace
}  // namespace kslsim
