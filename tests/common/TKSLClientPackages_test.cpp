// How often a package of events that fails is sent, whatever its failures do to the registration, and that the
// calls behind it have their turn.
#include <gtest/gtest.h>

#include <atomic>
#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"

using linktest::errorStruct;
using linktest::faultXml;
using linktest::Gate;
using linktest::initReply;
using linktest::Note;
using linktest::replyXml;
using linktest::TestClient;
using linktest::waitFor;

namespace {

const std::string Good = replyXml("<int>1</int>");
const std::string NotRegistered = replyXml(errorStruct(E_NOT_REGISTERED, "who"));
const std::string CommunicationError = replyXml(errorStruct(E_COMMUNICATION_ERROR, "lost"));
const std::string Unsync = replyXml(errorStruct(E_UNSYNC, "out of step"));

// A package that is answered so, one reply after the other, the last one again and again; then a call behind it.
struct Series {
  explicit Series(std::vector<std::string> replies) : mReplies(std::move(replies)) {
    client.wire.answer("game.pushEvents",
                       [this](const std::string&) { return mReplies[std::min(mNext++, mReplies.size() - 1)]; });
  }
  ~Series() { client.Stop(); }

  // Queues both while the service is away and waits for the call behind.
  bool run() {
    client.PushEvent(G_GAME_START, "i", 5);
    client.SendRequest(M_BYE, 0, KSLCallback(), "");
    client.Start(false, -1);  // one that waits finds the registration lost again, if the package was quick
    const bool done = client.pollUntil([this] { return client.wire.requests("game.bye").size() == 1; });
    client.Stop();
    client.Poll(0);
    return done;
  }

  size_t sent() const { return client.wire.requests("game.pushEvents").size(); }
  size_t registrations() const { return client.wire.requests("topscreen.init").size(); }
  std::vector<int> codes() const {
    std::vector<int> found;
    for (const linktest::Note& note : client.listener.errors)
      if (note.method == M_PUSHEVENTS) found.push_back(note.code);
    return found;
  }

  TestClient client{0};

 private:
  std::vector<std::string> mReplies;
  size_t mNext = 0;
};

const Note RegisteredNote{M_INIT, 0, ""};
const Note StoppedNote{M_INIT, E_COMMUNICATION_ERROR, "Client timed out and stopped!"};

std::atomic<int> InitsParsed;

// Can make something of each third answer to a registration, and throws over the others.
void* parseEachThirdInit(const xmlrpc_c::value& toParse, int& parseStatus) {
  if (InitsParsed++ % 3 != 0) throw 5;
  return linktest::parseTestInit(toParse, parseStatus);
}

}  // namespace

TEST(TKSLClientPackages, AFailureThatKeepsTheRegistrationIsSentThreeTimes) {
  Series series({Unsync});
  ASSERT_TRUE(series.run());
  EXPECT_EQ(3U, series.sent());
  EXPECT_EQ(1U, series.registrations());
  EXPECT_EQ((std::vector<int>{E_UNSYNC, E_UNSYNC, E_UNSYNC}), series.codes());
}

TEST(TKSLClientPackages, AFailureThatEndsTheRegistrationIsSentThreeTimes) {
  struct Reply {
    std::string xml;
    int code;
  };
  const Reply replies[] = {{NotRegistered, E_NOT_REGISTERED},
                           {CommunicationError, E_COMMUNICATION_ERROR},
                           {faultXml(-504, "down"), E_COMMUNICATION_ERROR},
                           {faultXml(-505, "slow"), E_COMMUNICATION_ERROR}};
  for (const Reply& reply : replies) {
    SCOPED_TRACE(reply.xml);
    Series series({reply.xml});
    ASSERT_TRUE(series.run()) << "the call behind never had its turn";
    EXPECT_EQ(3U, series.sent());
    EXPECT_EQ(4U, series.registrations());
    EXPECT_EQ((std::vector<int>(3, reply.code)), series.codes());
  }
}

TEST(TKSLClientPackages, FailuresOfEveryKindCountTogether) {
  Series series({NotRegistered, Unsync, CommunicationError});
  ASSERT_TRUE(series.run());
  EXPECT_EQ(3U, series.sent());
  EXPECT_EQ((std::vector<int>{E_NOT_REGISTERED, E_UNSYNC, E_COMMUNICATION_ERROR}), series.codes());
}

TEST(TKSLClientPackages, ThirdTimeLucky) {
  Series series({NotRegistered, CommunicationError, Good});
  ASSERT_TRUE(series.run());
  EXPECT_EQ(3U, series.sent());
  EXPECT_EQ((std::vector<int>{E_NOT_REGISTERED, E_COMMUNICATION_ERROR}), series.codes());
  ASSERT_TRUE(series.client.startRegistered());
  series.client.PushEvent(G_GAME_END, "");
  ASSERT_TRUE(waitFor([&] { return series.sent() == 4; }));
  const std::string next = series.client.wire.requests("game.pushEvents")[3];
  EXPECT_NE(std::string::npos, next.find("<param><value><i4>1</i4></value></param>")) << next;
}

TEST(TKSLClientPackages, AGoodAnswerIsTheEnd) {
  Series series({Good});
  ASSERT_TRUE(series.run());
  EXPECT_EQ(1U, series.sent());
  EXPECT_TRUE(series.codes().empty());
}

TEST(TKSLClientPackages, EachOneHasThreeTriesOfItsOwn) {
  Series series({NotRegistered});
  for (int n = 0; n < 20; ++n) series.client.PushEvent(G_LOG, "i", n);
  ASSERT_TRUE(series.run());  // with the 21st event a second package
  EXPECT_EQ(6U, series.sent());
}

TEST(TKSLClientPackages, AttemptsToRegisterAreNotAttemptsToSend) {
  Series series({NotRegistered});
  std::atomic<int> attempts{0};
  // Every registration but the first one succeeds only with the fourth attempt.
  series.client.wire.answer("topscreen.init", [&attempts](const std::string&) -> std::string {
    if (attempts++ % 4 != 0) throw girerr::error("refused");
    return initReply(7);
  });
  series.client.SetPopRequestFrequency(100000);
  ASSERT_TRUE(series.run());
  EXPECT_EQ(3U, series.sent());
  EXPECT_EQ(13U, series.registrations());
}

TEST(TKSLClientPackages, IsSentThreeTimesAlsoWithoutAnyRegistration) {
  Series series({Unsync});
  series.client.SetRegisterRequired(false);
  ASSERT_TRUE(series.run());
  EXPECT_EQ(3U, series.sent());
  EXPECT_EQ(0U, series.registrations());
}

TEST(TKSLClientPackages, GoesOutAgainWithTheNewIdentifierAndItsOldNumber) {
  Series series({Good});
  ASSERT_TRUE(series.run());
  std::atomic<int> id{20};
  series.client.wire.answer("topscreen.init", [&id](const std::string&) { return initReply(++id); });
  series.client.wire.answer("game.pushEvents", NotRegistered);
  series.client.PushEvent(G_GAME_END, "");
  series.client.Start(false, -1);
  ASSERT_TRUE(waitFor([&] { return id == 24; }));
  series.client.Stop();
  const std::vector<std::string> requests = series.client.wire.requests("game.pushEvents");
  ASSERT_EQ(4U, requests.size());
  for (int n = 1; n <= 3; ++n) {
    const std::string start = "<param><value><i4>" + std::to_string(20 + n) +
                              "</i4></value></param>\r\n<param><value><i4>1</i4></value></param>";
    EXPECT_NE(std::string::npos, requests[static_cast<size_t>(n)].find(start)) << requests[static_cast<size_t>(n)];
  }
}

// What is pushed meanwhile is no part of the package in hand, which the service may know already.
TEST(TKSLClientPackages, TheOneInHandTakesNothingIn) {
  Gate gate;
  TestClient client(0);
  client.wire.answer("game.pushEvents", [&gate](const std::string&) {
    gate.pass();
    return Unsync;
  });
  ASSERT_TRUE(client.startRegistered());
  client.PushEvent(G_GAME_START, "");
  ASSERT_TRUE(waitFor([&] { return gate.arrived() == 1; }));
  client.PushEvent(G_GAME_END, "");
  gate.open();
  ASSERT_TRUE(waitFor([&] { return gate.arrived() == 6; }));
  client.Stop();
  const std::vector<std::string> requests = client.wire.requests("game.pushEvents");
  ASSERT_EQ(6U, requests.size());
  EXPECT_EQ(requests[0], requests[2]);
  EXPECT_EQ(requests[3], requests[5]);
  EXPECT_NE(requests[2], requests[3]);
}

TEST(TKSLClientPackages, TheOneInHandSurvivesExceptionsInTheRegistration) {
  Series series({NotRegistered});
  InitsParsed = 0;  // the first registration succeeds, each later one at the third attempt
  series.client.SetInitMethod("topscreen.init", parseEachThirdInit, linktest::destroyTestInit);
  series.client.SetPopRequestFrequency(100000);
  testing::internal::CaptureStdout();
  const bool done = series.run();
  const std::string told = testing::internal::GetCapturedStdout();
  ASSERT_TRUE(done);
  const Note& good = RegisteredNote;
  const Note& stopped = StoppedNote;
  EXPECT_EQ((std::vector<Note>{good, stopped, stopped, good, stopped, stopped, good, stopped, stopped, good}),
            series.client.listener.inits);
  EXPECT_EQ((std::vector<int>{E_NOT_REGISTERED, E_NOT_REGISTERED, E_NOT_REGISTERED}), series.codes());
  const std::vector<std::string> requests = series.client.wire.requests("game.pushEvents");
  EXPECT_EQ((std::vector<std::string>(3, requests[0])), requests);
  std::string lines;
  for (int n = 0; n < 6; ++n) lines += "!!!! KSLCLIENT:: ERROR in communication thread!\n";
  EXPECT_EQ(lines, told);
  // The next attempt begins with the next pass; the pauses are those of the second and the third loss.
  EXPECT_EQ((std::vector<Uint32>{1000, 1000}), series.client.pausesSoFar());
  const linktest::Beside other([&series] { series.client.SendRequestSync(M_VOLUME, KSLCallback(), "()"); });
  EXPECT_TRUE(other.ends()) << "the network is held";
}

TEST(TKSLClientPackages, TheOneInTheQueueAndABlockingStartOutlastExceptionsInTheRegistration) {
  TestClient client(0);
  InitsParsed = 1;
  client.SetInitMethod("topscreen.init", parseEachThirdInit, linktest::destroyTestInit);
  client.wire.answer("game.pushEvents", Good);
  client.PushEvent(G_GAME_START, "i", 5);
  client.SendRequest(M_BYE, 0, KSLCallback(), "");
  EXPECT_EQ(0, client.Start(true, 0));
  EXPECT_EQ((std::vector<Note>{StoppedNote, StoppedNote, RegisteredNote}), client.listener.inits);
  EXPECT_TRUE(waitFor([&] { return client.wire.requests("game.bye").size() == 1; }));
  EXPECT_EQ(1U, client.wire.requests("game.pushEvents").size());
}
