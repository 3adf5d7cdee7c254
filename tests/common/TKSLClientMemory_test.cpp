// What the client gives back of the things that it makes: semaphores, mutexes, states of errors, requests, records.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"
#include "common/TKSLReturnStructures.h"
#include "tests/support/SdlHandles.h"

using linktest::errorStruct;
using linktest::faultXml;
using linktest::replyXml;
using linktest::TestClient;

using sdlhandles::alive;
using sdlhandles::next;

// A state of errors without an error holds nothing.
extern "C" void xmlrpc_env_set_fault(xmlrpc_env* env, int code, const char* text) {
  alive().add("fault", env);
  next<void (*)(xmlrpc_env*, int, const char*)>("xmlrpc_env_set_fault")(env, code, text);
}
extern "C" void xmlrpc_env_clean(xmlrpc_env* env) {
  alive().remove("fault", env);
  next<void (*)(xmlrpc_env*)>("xmlrpc_env_clean")(env);
}

namespace {

class TKSLClientMemory : public testing::Test {
 protected:
  const std::map<std::string, int> mBefore = alive().kinds();
  void expectNothingLeft() { EXPECT_EQ(mBefore, alive().kinds()); }

  // What a round leaves on the heap when it is done again and again, in bytes. What malloc keeps for a thread that
  // freed a piece counts as used too, and which pieces that are depends on what the threads meet: it is kept once,
  // whereas what a round loses is lost in each series of rounds. So the best of a few series is told.
  template <class F>
  static double leftByEach(F round, int rounds = 500) {
    for (int n = 0; n < 20; ++n) round();
    double least = HUGE_VAL;
    for (int series = 0; series < 5 && least > 0; ++series) {
      const auto before = static_cast<long>(mallinfo2().uordblks);
      for (int n = 0; n < rounds; ++n) round();
      least = std::min(least, static_cast<double>(static_cast<long>(mallinfo2().uordblks) - before) / rounds);
    }
    return least;
  }
};

}  // namespace

TEST_F(TKSLClientMemory, AClientThatNeverStartedLeavesNothing) {
  { TestClient client(3); }
  expectNothingLeft();
}

TEST_F(TKSLClientMemory, AStartedClientLeavesNothing) {
  {
    TestClient client(0);
    ASSERT_EQ(0, client.Start(true, 0));
  }
  expectNothingLeft();
}

TEST_F(TKSLClientMemory, AStartThatNobodyAskedAboutLeavesNothing) {
  {
    TestClient client(0);
    ASSERT_EQ(0, client.Start(false, 0));
  }
  expectNothingLeft();
}

TEST_F(TKSLClientMemory, AnotherStartLeavesNothingOfTheOneBefore) {
  {
    TestClient client(0);
    for (int n = 0; n < 3; ++n) {
      ASSERT_EQ(0, client.Start(false, 0));
      EXPECT_EQ(0, client.Stop());
    }
    EXPECT_EQ(0, client.Restart());
  }
  expectNothingLeft();
}

TEST_F(TKSLClientMemory, TheAnswerToTheQuestionAboutTheStartTakesItsSemaphore) {
  {
    TestClient client(0);
    const std::map<std::string, int> unstarted = alive().kinds();
    ASSERT_EQ(0, client.Start(false, 0));
    ASSERT_TRUE(client.pollUntil([&] { return client.IsRegistered(); }));
    EXPECT_EQ(unstarted.at("semaphore"), alive().kinds().at("semaphore"));
  }
  expectNothingLeft();
}

TEST_F(TKSLClientMemory, ARefusedStartLeavesNothing) {
  {
    TestClient client(0);
    client.wire.answer("topscreen.init", replyXml(errorStruct(E_INIT_REJECTED, "no")));
    EXPECT_EQ(-1, client.Start(true, 0));
  }
  expectNothingLeft();
}

TEST_F(TKSLClientMemory, EveryFaultOfACallIsGivenBack) {
  {
    TestClient client(0);
    const std::function<std::string(const std::string&)> answers[] = {
      [](const std::string&) -> std::string { throw girerr::error("refused"); },
      [](const std::string&) { return faultXml(-504, "down"); },
      [](const std::string&) { return faultXml(3, "no"); },
      [](const std::string&) { return replyXml(errorStruct(5, "no")); },
      [](const std::string&) { return replyXml("<string>no number</string>"); },
      [](const std::string&) { return replyXml("<int>5</int>"); },
    };
    for (const auto& answer : answers) {
      client.wire.answer("game.pushEvents", answer);
      client.SendRequestSync(M_PUSHEVENTS, KSLCallback(), "(i)", 1);
    }
    client.SendRequestSync(M_PUSHEVENTS, KSLCallback(), "(i", 1);
    client.SendRequest(M_PUSHEVENTS, 0, KSLCallback(), "i)", 1);
    client.PushEvent(static_cast<KSLGameEvent>(1), "is", 1, "two");
    EXPECT_TRUE(client.sendAll().empty());
  }
  expectNothingLeft();
}

namespace {

// Answers every call alike and forgets it.
class Forgetful : public linktest::FakeTransport {
 public:
  void call(xmlrpc_c::carriageParm* const, std::string const&, std::string* const responseXmlP) override {
    *responseXmlP = reply;
    answered = true;
  }
  std::string reply;
  std::atomic<bool> answered{false};
};

constexpr double kNothing = 16;  // less than the smallest piece

const std::string Long(200, 'x');

}  // namespace

TEST_F(TKSLClientMemory, SynchronousCallsLeaveNothingOnTheHeap) {
  auto* wire = new Forgetful;
  TestClient client(wire, 0);
  client.SetListener(nullptr);  // it would keep what it hears
  const auto call = [&] { client.SendRequestSync(M_PUSHEVENTS, KSLCallback(), "(s)", Long.c_str()); };
  for (const std::string& reply : {replyXml("<int>5</int>"), replyXml("<string>" + Long + "</string>"),
                                   faultXml(3, Long), replyXml(errorStruct(5, Long)), std::string("no XML")}) {
    wire->reply = reply;
    EXPECT_LT(leftByEach(call), kNothing) << reply;
  }
  EXPECT_LT(leftByEach([&] { client.SendRequestSync(M_PUSHEVENTS, KSLCallback(), "(ss", Long.c_str(), "x"); }),
            kNothing);
  EXPECT_LT(leftByEach([&] { client.SendRequestSync(M_PUSHEVENTS, KSLCallback(), "ss", Long.c_str(), "x"); }),
            kNothing);
}

TEST_F(TKSLClientMemory, WhatIsQueuedGoesWithTheClient) {
  const auto round = [] {
    TestClient client(new Forgetful, 0);
    client.SendRequest(M_SETPARAM, 0, KSLCallback(), "(s)", Long.c_str());
    client.SendRequest(M_PLATFORM_STATUS, 0, KSLCallback(), "");
  };
  EXPECT_LT(leftByEach(round), kNothing);
}

TEST_F(TKSLClientMemory, AnswersThatNobodyAskedForGoWithTheClient) {
  for (const std::string& reply : {replyXml("<string>" + Long + "</string>"), replyXml(errorStruct(5, Long))}) {
    const auto round = [&reply] {
      auto* wire = new Forgetful;
      wire->reply = reply;
      TestClient client(wire, 0);
      client.SetRegisterRequired(false);
      client.SendRequest(M_GETPARAM, 0, KSLCallback(), "(s)", Long.c_str());
      client.Start(false, 0);
      EXPECT_TRUE(linktest::waitFor([wire] { return wire->answered.load(); }));
    };
    EXPECT_LT(leftByEach(round, 100), kNothing) << reply;
  }
}

TEST_F(TKSLClientMemory, EventsOfOnePackageAreMovedNotCopied) {
  const auto round = [] {
    TestClient client(new Forgetful, 0);
    for (int n = 0; n < 40; ++n) client.PushEvent(static_cast<KSLGameEvent>(n), "s", Long.c_str());
  };
  EXPECT_LT(leftByEach(round), kNothing);
}

TEST_F(TKSLClientMemory, AQuestionForEventsThatIsAskedAlreadyIsDropped) {
  TestClient client(new Forgetful, 0);
  client.SendRequest(M_POPEVENTS, 2, KSLCallback(), "(s)", Long.c_str());
  EXPECT_LT(leftByEach([&] { client.SendRequest(M_POPEVENTS, 2, KSLCallback(), "(s)", Long.c_str()); }), kNothing);
}

TEST_F(TKSLClientMemory, ACallThatTheThreadSentIsFreedAndSoIsItsAnswer) {
  auto* wire = new Forgetful;
  TestClient client(wire, 0);
  wire->reply = linktest::initReply(7);
  ASSERT_TRUE(client.startRegistered());
  client.TogglePopRequests(false);
  wire->reply = replyXml("<string>" + Long + "</string>");
  int answers = 0;
  const auto count = [&answers](void*, bool) { return ++answers; };
  const auto round = [&] {
    const int before = answers;
    client.SendRequest(M_GETPARAM, 0, count, "(s)", Long.c_str());
    ASSERT_TRUE(client.pollUntil([&] { return answers > before; }));
  };
  EXPECT_LT(leftByEach(round), kNothing);
}
