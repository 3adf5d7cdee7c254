// A service that registers the program and then knows nothing of it.
#include <gtest/gtest.h>

#include "LinkTestSupport.h"

using linktest::errorStruct;
using linktest::initReply;
using linktest::replyXml;
using linktest::TestClient;
using linktest::waitFor;

namespace {

const std::string Lost = replyXml(errorStruct(E_NOT_REGISTERED, "who"));
const std::string NoEvents = replyXml(linktest::arrayXml({}));

size_t registrations(TestClient& client) { return client.wire.requests("topscreen.init").size(); }

// Asks for the volume, whose answer is the loss, and waits until the client has registered again.
testing::AssertionResult lose(TestClient& client) {
  const size_t before = registrations(client);
  client.SendRequest(M_VOLUME, 9, KSLCallback(), "");
  if (waitFor([&] { return registrations(client) > before && client.ID() > 0; }))
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << registrations(client) << " registrations";
}

class Losses : public testing::Test {
 protected:
  Losses() : client(0) {
    client.SetPopRequestFrequency(3600000);  // none by itself
    client.wire.answer("system.volume", Lost);
    client.wire.answer("game.popEvents", NoEvents);
  }
  bool askForEvents() {
    int answers = 0;
    client.SendRequest(
      M_POPEVENTS, 9,
      [&](void*, bool) {
        ++answers;
        return 0;
      },
      "");
    return client.pollUntil([&] { return answers == 1; });
  }

  TestClient client;
};

TEST_F(Losses, TheFirstIsAnsweredAtOnceAndEachFurtherOneAfterASecond) {
  ASSERT_TRUE(client.startRegistered());
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), std::vector<Uint32>{});
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), std::vector<Uint32>{1000});
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), (std::vector<Uint32>{1000, 1000}));
}

TEST_F(Losses, AGoodAnswerToARequestForEventsInBetweenMakesTheNextOneTheFirst) {
  ASSERT_TRUE(client.startRegistered());
  ASSERT_TRUE(lose(client));
  ASSERT_TRUE(askForEvents());
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), std::vector<Uint32>{});
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), std::vector<Uint32>{1000});
}

TEST_F(Losses, NoOtherGoodAnswerDoes) {
  client.wire.answer("system.denomination", replyXml("<int>5</int>"));
  ASSERT_TRUE(client.startRegistered());
  ASSERT_TRUE(lose(client));
  client.SendRequest(M_DENOMINATION, 9, KSLCallback(), "");
  ASSERT_TRUE(waitFor([&] { return client.wire.requests("system.denomination").size() == 1; }));
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), std::vector<Uint32>{1000});
}

TEST_F(Losses, ARequestForEventsThatFailsDoesNotEither) {
  ASSERT_TRUE(client.startRegistered());
  ASSERT_TRUE(lose(client));
  client.wire.answer("game.popEvents", replyXml(errorStruct(-7, "later")));
  ASSERT_TRUE(askForEvents());
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), std::vector<Uint32>{1000});
}

TEST_F(Losses, ByTheNetworkCountAsWell) {
  client.wire.answer("system.volume", linktest::faultXml(-504, "cable"));
  ASSERT_TRUE(client.startRegistered());
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), std::vector<Uint32>{});
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), std::vector<Uint32>{1000});
}

TEST_F(Losses, FailedRegistrationsAreNone) {
  ASSERT_TRUE(client.startRegistered());
  int failures = 2;
  client.wire.answer("topscreen.init", [&](const std::string&) { return failures-- > 0 ? Lost : initReply(7); });
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), (std::vector<Uint32>{1000, 1000})) << "of the two refused attempts";
}

TEST_F(Losses, AreForgottenByAStart) {
  ASSERT_TRUE(client.startRegistered());
  ASSERT_TRUE(lose(client));
  ASSERT_EQ(0, client.Restart());
  ASSERT_TRUE(lose(client));
  EXPECT_EQ(client.pausesSoFar(), std::vector<Uint32>{});
}

}  // namespace
