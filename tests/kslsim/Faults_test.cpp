// What can be ordered to go wrong, as a peer on the wire sees it.
#include <gtest/gtest.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "tools/kslsim/Service.h"

namespace kslsim {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// A connection of one's own, to see each byte when it comes.
class RawCall {
 public:
  explicit RawCall(int port) : mSocket(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    mConnected = connect(mSocket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  }
  ~RawCall() { close(mSocket); }

  bool connected() const { return mConnected; }
  void ask(const std::string& method) {
    const std::string body = "<methodCall><methodName>" + method + "</methodName><params/></methodCall>";
    const std::string text =
      "POST /KSL HTTP/1.1\r\nHost: localhost\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    ASSERT_EQ(send(mSocket, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  }
  // What comes until the peer shuts the connection or the time is over.
  std::string read(std::chrono::milliseconds time) {
    std::string out;
    const auto end = Clock::now() + time;
    for (;;) {
      const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now()).count();
      if (left <= 0) return out;
      const timeval wait{left / 1000000, left % 1000000};
      setsockopt(mSocket, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof(wait));
      char buffer[4096];
      const ssize_t count = recv(mSocket, buffer, sizeof(buffer), 0);
      if (count == 0 || (count < 0 && errno == ECONNRESET)) mShut = true;
      if (count <= 0) return out;
      out.append(buffer, static_cast<size_t>(count));
    }
  }
  bool shut() const { return mShut; }

 private:
  int mSocket;
  bool mConnected = false, mShut = false;
};

class Faults : public testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(service.start(error)) << error;
    rpc = std::make_unique<httplib::Client>("127.0.0.1", service.port());
    rpc->set_read_timeout(20);
    order({{"do", "add"}});
  }
  void order(const Json& step) { service.simulator().apply(step); }
  void bad(Json step) {
    step["do"] = "bad";
    step["method"] = "platform.state";
    order(step);
  }
  std::string body(const std::string& method) {
    const auto answer =
      rpc->Post("/KSL", "<methodCall><methodName>" + method + "</methodName><params/></methodCall>", "text/xml");
    return answer ? answer->body : "no answer";
  }
  std::string state() { return body("platform.state"); }
  template <typename Condition>
  bool within(std::chrono::milliseconds bound, Condition condition) {
    const auto end = Clock::now() + bound;
    while (!condition()) {
      if (Clock::now() > end) return false;
      std::this_thread::sleep_for(2ms);
    }
    return true;
  }
  bool held() {
    return within(5s, [this] { return service.simulator().log().since(0).back().contains("bad"); });
  }

  Service service{{0, 0, "/KSL", ""}};
  std::unique_ptr<httplib::Client> rpc;
};

TEST_F(Faults, WholeBodiesAreWhatTheyAreCalled) {
  bad({{"reply", "notxml"}});
  EXPECT_EQ(state(), "this is no XML");
  bad({{"reply", "utf8"}});
  EXPECT_NE(state().find("\xC3\x28"), std::string::npos);
  bad({{"reply", "range"}});
  EXPECT_NE(state().find("<int>99999999999</int>"), std::string::npos);
  bad({{"reply", "flood"}, {"count", 3}});
  const std::string three = state();
  bad({{"reply", "flood"}});
  const std::string many = state();
  const auto events = [](const std::string& text) {
    size_t out = 0;
    for (size_t at = text.find("eventID"); at != text.npos; at = text.find("eventID", at + 1)) ++out;
    return out;
  };
  EXPECT_EQ(events(three), 3u);
  EXPECT_EQ(events(many), 100000u);
  EXPECT_NE(state().find("JackpotData"), std::string::npos);
}

TEST_F(Faults, BodyIsAnyTextWithAnyStatus) {
  const auto ask = [this] {
    return rpc->Post("/KSL", "<methodCall><methodName>platform.state</methodName><params/></methodCall>",
                     "text/xml");
  };
  bad({{"reply", "body"}, {"text", "<nil>\r\n\xFF"}});
  auto answer = ask();
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 200);
  EXPECT_EQ(answer->body, "<nil>\r\n\xFF");
  EXPECT_EQ(answer->get_header_value("Content-Type"), "text/xml; charset=utf-8");
  bad({{"reply", "body"}, {"status", 503}});
  answer = ask();
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 503);
  EXPECT_EQ(answer->body, "");
}

TEST_F(Faults, RawBytesAreAllThatComes) {
  bad({{"reply", "raw"}, {"text", "what?\r\n\r\n"}});
  RawCall call(service.port());
  call.ask("platform.state");
  EXPECT_EQ(call.read(5s), "what?\r\n\r\n");
  EXPECT_TRUE(call.shut());
}

TEST_F(Faults, RefusedCallsAreNotedWithTheirTime) {
  order({{"do", "bad"}, {"method", "*"}, {"reply", "refuse"}, {"calls", -1}});
  const int64_t begin = service.simulator().now();
  for (int i = 0; i < 3; ++i) {
    RawCall call(service.port());
    call.ask("topscreen.init");
    EXPECT_EQ(call.read(5s), "");
    EXPECT_TRUE(call.shut());
  }
  const Json entries = service.simulator().log().since(2);
  ASSERT_EQ(entries.size(), 3u);
  for (const Json& entry : entries) {
    EXPECT_EQ(entry["method"], "topscreen.init");
    EXPECT_EQ(entry["bad"], "refuse");
    EXPECT_GE(entry["t"].get<int64_t>(), begin);
  }
  EXPECT_TRUE(service.simulator().report()["clients"].empty());
}

struct Spoiling {
  const char* name;
  const char* reply;
  const char* field;
  const char* there;
  const char* gone;
};

class SpoiltFields : public Faults, public testing::WithParamInterface<Spoiling> {};

TEST_P(SpoiltFields, AreWrongInAnOtherwiseRightAnswer) {
  const std::string good = state();
  bad({{"reply", GetParam().reply}, {"field", GetParam().field}});
  const std::string answer = state();
  EXPECT_NE(answer.find(GetParam().there), std::string::npos) << answer;
  EXPECT_EQ(answer.find(GetParam().gone), std::string::npos) << answer;
  EXPECT_NE(answer.find("<name>LanguageMessages</name>"), std::string::npos);
  EXPECT_EQ(service.simulator().log().since(0).back()["field"], GetParam().field);
  EXPECT_EQ(state(), good);
}

INSTANTIATE_TEST_SUITE_P(
  All, SpoiltFields,
  testing::Values(Spoiling{"TextToNumber", "type", "JackpotErrorString",
                           "<name>JackpotErrorString</name>\r\n<value><int>7</int>", "absent"},
                  Spoiling{"AmountToText", "type", "JackpotData/0/CurrentPot",
                           "<name>CurrentPot</name>\r\n<value><string>of another type</string>",
                           "<name>CurrentPot</name>\r\n<value><i8>"},
                  Spoiling{"StructToText", "type", "ActiveGame", "<name>ActiveGame</name>\r\n<value><string>",
                           "<name>Type</name>"},
                  Spoiling{"KeyLeftOut", "missing", "DemoMode", "<name>IsLoading</name>", "<name>DemoMode</name>"},
                  Spoiling{"KeyOfEveryItemLeftOut", "missing", "JackpotData/*/TimeTo", "<name>TimeFrom</name>",
                           "<name>TimeTo</name>"},
                  Spoiling{"IntTooLarge", "range", "ShowingPaytable",
                           "<name>ShowingPaytable</name>\r\n<value><int>99999999999</int>", "absent"},
                  Spoiling{"AmountTooLarge", "range", "MinBet",
                           "<name>MinBet</name>\r\n<value><i8>9223372036854775808</i8>", "absent"}),
  [](const auto& info) { return std::string(info.param.name); });

TEST_F(Faults, FieldThatTheAnswerHasNotWaitsForOneThatHas) {
  bad({{"reply", "missing"}, {"field", "JackpotData/1/Name"}});
  EXPECT_NE(state().find("<name>Name</name>"), std::string::npos);
  EXPECT_EQ(service.simulator().log().since(0).back().contains("bad"), false);
  EXPECT_EQ(service.simulator().report()["bad"]["platform.state"][0]["calls"], 1);
  order({{"do", "add"}, {"level", {{"Name", "SECOND"}}}});
  EXPECT_EQ(state().find("SECOND"), std::string::npos);
  EXPECT_NE(state().find("SECOND"), std::string::npos);
}

TEST_F(Faults, StepsAreChecked) {
  for (const char* step : {R"({"do": "bad", "method": "*", "reply": "missing"})",
                           R"({"do": "bad", "method": "*", "reply": "html", "field": "a"})",
                           R"({"do": "bad", "method": "*", "reply": "cut", "bytes": -1})",
                           R"({"do": "bad", "method": "*", "reply": "cut", "for": 0})",
                           R"({"do": "bad", "method": "*", "reply": "raw"})",
                           R"({"do": "bad", "method": "*", "reply": "body", "status": 199})",
                           R"({"do": "bad", "method": "game.popEvent", "reply": "html"})",
                           R"({"do": "good", "method": "game.popEvent"})"})
    EXPECT_THROW(order(Json::parse(step)), InputError) << step;
}

TEST_F(Faults, TakeOnlyWhatTheyUse) {
  const std::map<std::string, Json> arguments{{"ms", 5},    {"code", -1}, {"text", "a"},  {"field", "a"},
                                              {"bytes", 5}, {"count", 5}, {"status", 404}};
  size_t taken = 0;
  for (const BadRow& row : badRows()) {
    Json step{{"do", "bad"}, {"method", "*"}, {"reply", row.name}};
    for (const BadArgument& argument : row.arguments)
      if (argument.needed) step[argument.name] = "a";
    for (const auto& [argument, value] : arguments) {
      Json more = step;
      more[argument] = value;
      const bool takesIt = takes(row, argument);
      taken += takesIt;
      if (takesIt)
        EXPECT_NO_THROW(order(more)) << more;
      else
        EXPECT_THROW(order(more), InputError) << more;
    }
  }
  EXPECT_EQ(taken, 15u);
}

TEST_F(Faults, SilentConnectionStaysOpenUntilTheServiceIsToldToBeGood) {
  bad({{"reply", "silent"}});
  RawCall call(service.port());
  call.ask("platform.state");
  ASSERT_TRUE(held());
  EXPECT_EQ(call.read(300ms), "");
  EXPECT_FALSE(call.shut());
  order({{"do", "good"}});
  EXPECT_EQ(call.read(5s), "");
  EXPECT_TRUE(call.shut());
}

TEST_F(Faults, SilenceOfALengthEndsByItself) {
  bad({{"reply", "silent"}, {"ms", 100}});
  RawCall call(service.port());
  call.ask("platform.state");
  const auto begin = Clock::now();
  EXPECT_EQ(call.read(5s), "");
  EXPECT_TRUE(call.shut());
  EXPECT_GE(Clock::now() - begin, 100ms);
}

TEST_F(Faults, SilentConnectionDoesNotHoldUpTheEnd) {
  bad({{"reply", "silent"}});
  RawCall call(service.port());
  call.ask("platform.state");
  ASSERT_TRUE(held());
  const auto begin = Clock::now();
  service.stop();
  EXPECT_LT(Clock::now() - begin, 10s);
}

TEST_F(Faults, DripGivesTheRightAnswerByteByByte) {
  bad({{"reply", "drip"}, {"ms", 400}});
  RawCall slow(service.port());
  slow.ask("platform.state");
  const std::string some = slow.read(1900ms);
  EXPECT_GE(some.size(), 1u);
  EXPECT_LE(some.size(), 5u);
  EXPECT_EQ(std::string("HTTP/1.1 200").substr(0, some.size()), some);
  order({{"do", "good"}});

  bad({{"reply", "drip"}, {"ms", 0}});
  RawCall fast(service.port());
  fast.ask("platform.state");
  const std::string whole = fast.read(10s);
  EXPECT_NE(whole.find("\r\n\r\n<?xml"), std::string::npos);
  EXPECT_NE(whole.find("</methodResponse>"), std::string::npos);
  EXPECT_TRUE(fast.shut());
}

TEST_F(Faults, CutSendsExactlySoManyBytes) {
  for (int bytes : {0, 1, 20, 300, 5000}) {
    bad({{"reply", "cut"}, {"bytes", bytes}});
    RawCall call(service.port());
    call.ask("platform.state");
    const std::string got = call.read(5s);
    EXPECT_EQ(got.size(), static_cast<size_t>(bytes));
    EXPECT_TRUE(call.shut());
    EXPECT_EQ(got.substr(0, 12), std::string("HTTP/1.1 200").substr(0, got.size()));
  }
}

TEST_F(Faults, EndWithTheirTime) {
  bad({{"reply", "html"}, {"for", 3000}});
  EXPECT_EQ(service.simulator().report()["bad"]["platform.state"][0]["calls"], -1);
  EXPECT_NE(state().find("<!DOCTYPE html>"), std::string::npos);
  EXPECT_NE(state().find("<!DOCTYPE html>"), std::string::npos);
  EXPECT_TRUE(within(10s, [this] { return state().find("JackpotData") != std::string::npos; }));
  EXPECT_TRUE(service.simulator().report()["bad"].empty());
}

TEST_F(Faults, MeetOnlyTheirMethod) {
  bad({{"reply", "html"}, {"calls", -1}});
  EXPECT_NE(body("system.volume").find("<i4>50</i4>"), std::string::npos);
  EXPECT_NE(state().find("<!DOCTYPE html>"), std::string::npos);
}

TEST_F(Faults, RefusedConnectionIsADownOfThePort) {
  order({{"do", "down"}, {"ms", 300}});
  ASSERT_TRUE(within(5s, [this] { return !service.listening(); }));
  EXPECT_FALSE(RawCall(service.port()).connected());
  EXPECT_TRUE(within(10s, [this] { return RawCall(service.port()).connected(); }));
}

}  // namespace
}  // namespace kslsim
