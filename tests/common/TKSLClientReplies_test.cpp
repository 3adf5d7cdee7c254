// Replies of the service on their whole way, from the wire to the listener, and numbers at the ends of their
// ranges.
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <memory>

#include "LinkTestSupport.h"
#include "tests/support/FakeClock.h"

using linktest::arrayXml;
using linktest::errorStruct;
using linktest::eventXml;
using linktest::faultXml;
using linktest::initReply;
using linktest::memberXml;
using linktest::Note;
using linktest::replyXml;
using linktest::TestClient;
using linktest::waitFor;

namespace {

const char* const Numbers[] = {"-2147483648", "-32769", "-1", "0", "1", "32768", "65536", "2147483647"};
const char* const LongNumbers[] = {"-9223372036854775808", "-2147483649",        "-1", "0",
                                   "2147483648",           "9223372036854775807"};

// A registered client whose service answers requests for events so from then on. The clock stands still behind
// its time of silence, so that one request is made and it counts.
class Popping {
 public:
  explicit Popping(const std::string& reply) : mClock(20000) {
    client.wire.answer("game.popEvents", reply);
    EXPECT_TRUE(client.startRegistered());
    EXPECT_TRUE(waitFor([&] { return client.wire.requests("game.popEvents").size() == 1; }));
    client.Stop();
    client.Poll(0);
  }

  // Whether the time of silence runs from the answer.
  bool isTimedFromNow() {
    mClock.advance(4999);
    const bool early = client.IsTimedOut();
    mClock.advance(1);
    EXPECT_TRUE(client.IsTimedOut());
    mClock.set(20000);
    return !early;
  }

  TestClient client{0};

 private:
  FakeClock mClock;
};

// What a synchronous call of a registered client gets for this reply. Only one kind of it ends the registration.
Note answered(MethodType method, const std::string& reply) {
  TestClient client(0);
  client.SetPopRequestFrequency(3600000);
  EXPECT_TRUE(client.startRegistered());
  client.wire.answer("topscreen.init", initReply(8));
  std::atomic<bool> first{true};
  client.wire.answer(client.getMethodInfo(method).Address,
                     [&](const std::string&) { return first.exchange(false) ? reply : initReply(8); });
  uint64_t uid = 0;
  int code = 0;
  void* data = client.SendRequestSyncRaw(method, KSLCallback(), uid, code, "()");
  Note note{method, code, ""};
  if (code != 0) {
    const std::unique_ptr<KSLError> error(static_cast<KSLError*>(data));
    note.text = *error->errorDescription;
  } else if (data != nullptr) {
    client.getMethodInfo(method).DestroyData(data);
  }
  client.SendRequest(M_SETCOUNTER, 0, KSLCallback(), "");
  const size_t counters = method == M_SETCOUNTER ? 2 : 1;
  EXPECT_TRUE(waitFor([&] { return client.wire.requests("game.setCounter").size() == counters; }));
  const size_t expected = (method == M_INIT ? 2U : 1U) + (code == E_NOT_REGISTERED ? 1U : 0U);
  EXPECT_EQ(expected, client.wire.requests("topscreen.init").size()) << "registrations";
  EXPECT_EQ(code == E_NOT_REGISTERED ? 8 : 7, client.ID());
  client.Stop();  // before what it is answered with goes
  return note;
}

}  // namespace

TEST(TKSLClientReplies, AnEmptyArrayOfEventsIsASignOfLife) {
  for (const std::string& reply : {arrayXml({}), std::string("<nil/>")}) {
    Popping popping(replyXml(reply));
    EXPECT_TRUE(popping.client.listener.events.empty());
    EXPECT_TRUE(popping.client.listener.errors.empty());
    EXPECT_TRUE(popping.isTimedFromNow());
  }
}

TEST(TKSLClientReplies, AThirdEventWithoutAContextCostsAllAndIsNoSignOfLife) {
  Popping popping(replyXml(arrayXml({eventXml(1, "<nil/>"), eventXml(2, "<nil/>"),
                                     "<struct>" + memberXml("eventID", "<int>3</int>") + "</struct>"})));
  EXPECT_TRUE(popping.client.listener.events.empty());
  EXPECT_EQ((std::vector<Note>{{M_POPEVENTS, E_INTERNAL_ERROR, "Parsing of game.popEvents response failed."}}),
            popping.client.listener.errors);
  EXPECT_FALSE(popping.isTimedFromNow());
  EXPECT_EQ(0U, popping.client.SinceGoodAnswer());
}

TEST(TKSLClientReplies, OnlyTheAnswerThatSomebodyIsNotRegisteredEndsTheRegistration) {
  for (int n = 0; n < M_NULL; ++n) {
    const auto method = static_cast<MethodType>(n);
    for (const int code : {-1, -2, -3, -4, -5, -6, -7, -8, -9, -10, -101, -500, -501, 1, 12345,
                           std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
      EXPECT_EQ((Note{method, code, "text"}), answered(method, replyXml(errorStruct(code, "text"))));
  }
}

TEST(TKSLClientReplies, OfTheFaultsOnlyTwoCountAsTheNetwork) {
  for (const int code : {-1, -500, -501, -502, -503, -506, -507, 0, 1, 504, 505, std::numeric_limits<int>::min(),
                         std::numeric_limits<int>::max()})
    EXPECT_EQ((Note{M_VOLUME, E_INTERNAL_ERROR, "broken"}), answered(M_VOLUME, faultXml(code, "broken")));
  for (const int code : {-504, -505})
    EXPECT_EQ((Note{M_VOLUME, E_COMMUNICATION_ERROR, "broken"}), answered(M_VOLUME, faultXml(code, "broken")));
}

TEST(TKSLClientReplies, AFaultCodeOfSixtyFourBitsIsNoErrorReport) {
  for (const char* number : LongNumbers) {
    const std::string reply = replyXml("<struct>" + memberXml("faultCode", std::string("<i8>") + number + "</i8>") +
                                       memberXml("faultString", "<string>x</string>") + "</struct>");
    EXPECT_EQ((Note{M_GETPARAM, 0, ""}), answered(M_GETPARAM, reply)) << number;
    EXPECT_EQ(E_INTERNAL_ERROR, answered(M_POPEVENTS, reply).code) << number;
  }
}

TEST(TKSLClientReplies, EventsOfAnyNumberReachTheListener) {
  std::vector<std::string> items;
  std::vector<int> expected;
  for (const char* number : Numbers) {
    items.push_back("<struct>" + memberXml("eventID", std::string("<i4>") + number + "</i4>") +
                    memberXml("context", "<nil/>") + "</struct>");
    expected.push_back(std::stoi(number));
  }
  const Popping popping(replyXml(arrayXml(items)));
  EXPECT_EQ(expected, popping.client.listener.events);
}

TEST(TKSLClientReplies, ANumberOfSixtyFourBitsIsNoEventsNumber) {
  for (const char* number : LongNumbers) {
    const std::string item = "<struct>" + memberXml("eventID", std::string("<i8>") + number + "</i8>") +
                             memberXml("context", "<nil/>") + "</struct>";
    EXPECT_EQ(E_INTERNAL_ERROR, answered(M_POPEVENTS, replyXml(arrayXml({item}))).code) << number;
  }
}

TEST(TKSLClientReplies, ContextsOfAnyNumberAreReadable) {
  std::vector<std::string> items;
  for (const char* number : Numbers) items.push_back(eventXml(1, std::string("<int>") + number + "</int>"));
  for (const char* number : LongNumbers) items.push_back(eventXml(2, std::string("<i8>") + number + "</i8>"));
  for (const char* number : {"0", "-0.0", "-0.000000001", "123456789012345678901234567890"})
    items.push_back(eventXml(3, std::string("<double>") + number + "</double>"));
  std::vector<std::string> seen;
  const FakeClock clock(1000);
  TestClient client(0);
  client.listener.onEvent = [&seen](const Event& event) {
    // Each reader on each type: the wrong ones read nothing.
    EXPECT_EQ(event.id() == 1 ? std::to_string(event.asInt()) : "0", std::to_string(event.asInt()));
    EXPECT_EQ("", event.asString());
    EXPECT_FALSE(event.asBool());
    if (event.id() != 3) {
      EXPECT_EQ(0.0, event.asDouble());
      seen.push_back(std::to_string(event.id() == 1 ? event.asInt() : event.asLong()));
    } else {
      EXPECT_EQ(0, event.asLong());
    }
  };
  client.askForEvents(replyXml(arrayXml(items)));
  std::vector<std::string> expected(std::begin(Numbers), std::end(Numbers));
  expected.insert(expected.end(), std::begin(LongNumbers), std::end(LongNumbers));
  EXPECT_EQ(expected, seen);
  EXPECT_EQ(items.size(), client.listener.events.size());
}

TEST(TKSLClientReplies, APackageMayBeAcknowledgedWithAnyNumber) {
  for (const char* number : Numbers)
    EXPECT_EQ(0, answered(M_PUSHEVENTS, replyXml(std::string("<int>") + number + "</int>")).code) << number;
}

TEST(TKSLClientReplies, AnyIdentifierTravelsAsItCame) {
  for (const char* number : Numbers) {
    TestClient client(0);
    client.RegisterID(std::stoi(number));
    uint64_t uid = 0;
    int code = 0;
    client.SendRequestSyncRaw(M_BYE, KSLCallback(), uid, code, "()");
    EXPECT_EQ(linktest::requestXml("game.bye", {std::string("<i4>") + number + "</i4>"}),
              client.wire.requests().at(0));
  }
}

// What the parser made of a reply that it refuses goes at once; nobody else hears of it.
TEST(TKSLClientReplies, TheRecordOfARefusedReplyIsDestroyed) {
  static std::vector<void*> destroyed;
  const DestroyDataObjectFunction destroy = [](void* data) {
    destroyed.push_back(data);
    linktest::destroyTestInit(data);
  };
  struct Parser {
    ResponseParser parse;
    size_t destroyed;
    bool error;
  };
  const Parser parsers[] = {{[](const xmlrpc_c::value&, int& status) -> void* {
                               status = 1;
                               return new linktest::TestInitData;
                             },
                             1, true},
                            {[](const xmlrpc_c::value&, int& status) -> void* {
                               status = -1;
                               return nullptr;
                             },
                             0, true},
                            {[](const xmlrpc_c::value&, int& status) -> void* {
                               EXPECT_EQ(0, status) << "it starts at 0, for not all parsers write it";
                               return nullptr;
                             },
                             0, false}};
  for (const Parser& parser : parsers) {
    destroyed.clear();
    TestClient client(0);
    client.SetInitMethod("topscreen.init", parser.parse, destroy);
    uint64_t uid = 0;
    int code = 0;
    auto* error =
      static_cast<KSLError*>(client.SendRequestSyncRaw(M_INIT, KSLCallback(), uid, code, "(ss)", "name", "1.5.0"));
    EXPECT_EQ(parser.destroyed, destroyed.size());
    EXPECT_EQ(parser.error ? E_INTERNAL_ERROR : E_NO_ERROR, code);
    ASSERT_EQ(parser.error, error != nullptr);
    if (error != nullptr) {
      EXPECT_EQ(E_INTERNAL_ERROR, error->errorCode);
      EXPECT_EQ("Parsing of topscreen.init response failed.", *error->errorDescription);
    }
    delete error;
  }
}

TEST(TKSLClientReplies, TheCodeOfAnErrorIsZeroForAGoodAnswer) {
  TestClient client(0);
  int code = 99;
  uint64_t uid = 0;
  EXPECT_EQ(nullptr, client.SendRequestSyncRaw(M_BYE, KSLCallback(), uid, code, "()"));
  EXPECT_EQ(0, code);
}

TEST(TKSLClientReplies, TheAverageIsKeptForEachMethod) {
  FakeClock clock(1000);
  TestClient client(0);
  client.wire.answer("game.bye", [&clock](const std::string&) {
    clock.advance(40);
    return replyXml("<nil/>");
  });
  client.wire.answer("system.volume", [&clock](const std::string&) -> std::string {
    clock.advance(7);
    throw 5;
  });
  client.SendRequestSync(M_BYE, KSLCallback(), "()");
  client.SendRequestSync(M_VOLUME, KSLCallback(), "()");
  for (int n = 0; n < M_NULL; ++n) {
    const auto method = static_cast<MethodType>(n);
    EXPECT_EQ(method == M_BYE ? 40U : method == M_VOLUME ? 7U : 0U, client.averageOf(method)) << n;
  }
  // The calls of one method alone count for its average.
  Uint32 duration = 60;
  for (const char* address : {"game.bye", "system.denomination"}) {
    client.wire.answer(address, [&clock, &duration](const std::string&) {
      clock.advance(duration);
      return replyXml("<nil/>");
    });
  }
  client.SendRequestSync(M_BYE, KSLCallback(), "()");
  duration = 100;
  client.SendRequestSync(M_DENOMINATION, KSLCallback(), "()");
  EXPECT_EQ(50U, client.averageOf(M_BYE));
  EXPECT_EQ(100U, client.averageOf(M_DENOMINATION));
}
