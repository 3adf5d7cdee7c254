// The failures of a real connection: the client over its own HTTP transport against the simulator of the service in
// this process, which answers badly when told. After each of them the client goes on.
#include <gtest/gtest.h>

#include "LinkTestSupport.h"
#include "tests/support/TestApplication.h"
#include "tools/kslsim/Service.h"

using kslsim::Json;
using linktest::errorStruct;
using linktest::faultXml;
using linktest::memberXml;
using linktest::Note;
using linktest::replyXml;
using linktest::waitFor;

namespace {

// The service on a free port, steered from here.
class Simulator {
 public:
  Simulator() {
    std::string error;
    EXPECT_TRUE(mService.start(error)) << error;
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(mService.port()) + "/KSL"; }
  void apply(const Json& step) { mService.simulator().apply(step); }
  bool shutThePort() {
    apply({{"do", "down"}, {"keep", true}});
    return waitFor([this] { return !mService.listening(); });
  }

 private:
  kslsim::Service mService{{.port = 0, .controlPort = 0}};
};

class HttpClient : public TKSLClient {
 public:
  explicit HttpClient(const std::string& url) : TKSLClient("TopScreen", url, 0) {
    SetInitMethod("topscreen.init", linktest::parseTestInit, linktest::destroyTestInit);
    SetListener(&listener);
    SetPopRequestFrequency(1);
    mDelay = [](Uint32) { SDL_Delay(1); };
  }
  ~HttpClient() { Stop(); }

  bool pollUntil(const std::function<bool()>& condition) {
    return waitFor([&] {
      Poll(0);
      return condition();
    });
  }

  linktest::NotingListener listener;
};

struct BadReply {
  const char* name;
  Json reply;  // as a "bad" step has it
  int code;
  std::string text;
};

void PrintTo(const BadReply& reply, std::ostream* out) { *out << reply.name; }

const std::string Failed = "sendInternal(): Connection failed";
const std::string Refused = "Parsing of platform.state response failed.";

Json simple(const char* reply) { return {{"reply", reply}}; }
Json raw(const std::string& bytes) { return {{"reply", "raw"}, {"text", bytes}}; }
Json body(const std::string& text) { return {{"reply", "body"}, {"text", text}}; }

std::string nested(int depth) {
  std::string open;
  std::string close;
  for (int n = 0; n < depth; ++n) {
    open += "<array><data><value>";
    close += "</value></data></array>";
  }
  return open + "<int>1</int>" + close;
}

std::string cut(const std::string& bytes, size_t missing) { return bytes.substr(0, bytes.size() - missing); }

const BadReply BadReplies[] = {
  {"InternalServerError", {{"reply", "body"}, {"status", 500}, {"text", "oops"}}, 1, Failed},
  {"NotFound", {{"reply", "body"}, {"status", 404}}, 1, Failed},
  {"Redirect", raw("HTTP/1.1 301 Away\r\nLocation: /x\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"), 1,
   Failed},
  {"Html", simple("html"), 1, Failed},
  {"PlainText", body("hello"), 1, Failed},
  {"EmptyBody", body(""), 1, Failed},
  {"NoAnswerAtAll", simple("refuse"), 1, Failed},
  {"NoHttp", raw("what?\r\n\r\n"), 1, Failed},
  {"CutInTheHeader", raw("HTTP/1.1 200 OK\r\nContent-Ty"), 1, Failed},
  {"CutInTheBody", simple("cut"), 1, Failed},
  {"CutXml", body(cut(replyXml("<int>1</int>"), 20)), 1, Failed},
  {"WrongEnding", body(replyXml("<int>1</array>")), 1, Failed},
  {"InvalidUtf8", body(replyXml("<string>\xFF\xFE</string>")), 1, Failed},
  {"IntTooLarge", body(replyXml("<int>2147483648</int>")), 1, Failed},
  {"I8OneTooLarge", body(replyXml("<i8>9223372036854775808</i8>")), 1, Failed},
  {"I8OneTooSmall", body(replyXml("<i8>-9223372036854775809</i8>")), 1, Failed},
  {"I8Letters", body(replyXml("<i8>abc</i8>")), 1, Failed},
  {"I8PrefixedTooLarge", body(replyXml("<ex:i8>99999999999999999999</ex:i8>")), 1, Failed},
  {"SixHundredKilobytes", simple("large"), 1, Failed},
  {"Nested200", body(replyXml(nested(200))), 1, Failed},
  {"Nil", body(replyXml("<nil/>")), E_INTERNAL_ERROR, Refused},
  {"Int", body(replyXml("<int>5</int>")), E_INTERNAL_ERROR, Refused},
  {"Array", body(replyXml(linktest::arrayXml({"<int>5</int>"}))), E_INTERNAL_ERROR, Refused},
  {"EmptyStruct", simple("empty"), E_INTERNAL_ERROR, Refused},
  {"FaultCodeZero", {{"reply", "fault"}, {"code", 0}, {"text", "fine"}}, E_INTERNAL_ERROR, Refused},
  {"FaultCodeWithoutText", body(replyXml("<struct>" + memberXml("faultCode", "<int>-6</int>") + "</struct>")),
   E_INTERNAL_ERROR, Refused},
  {"FaultCode", {{"reply", "fault"}, {"code", "E_SERVER_FULL"}, {"text", "full"}}, E_SERVER_FULL, "full"},
  {"FaultCodeOutOfTheEnumeration", body(replyXml(errorStruct(12345, "odd %s %n"))), 12345, "odd %s %n"},
  {"Fault", {{"reply", "rpcfault"}, {"code", 7}, {"text", "RPC broken"}}, E_INTERNAL_ERROR, "RPC broken"},
  {"FaultThatLooksLikeARefusal", body(faultXml(-1, "not registered")), E_INTERNAL_ERROR, "not registered"},
};

class BadReplyOverHttp : public testing::TestWithParam<BadReply> {};

}  // namespace

TEST_P(BadReplyOverHttp, IsOneErrorAndTheClientGoesOn) {
  Simulator simulator;
  HttpClient client(simulator.url());
  ASSERT_EQ(0, client.Start(true, 0));
  const int id = client.ID();
  Json step = GetParam().reply;
  // For all calls: the transport asks again by itself where a kept connection is shut.
  step.update({{"do", "bad"}, {"method", "platform.state"}, {"calls", -1}});
  simulator.apply(step);

  client.SendRequest(M_PLATFORM_STATUS, 0, KSLCallback(), "");
  ASSERT_TRUE(client.pollUntil([&] { return !client.listener.errors.empty(); }));
  EXPECT_LT(0, id);
  EXPECT_EQ(id, client.ID());
  EXPECT_TRUE(client.CommunicationEnabled());

  simulator.apply({{"do", "event"}, {"id", T_GAME_EXITED}});
  EXPECT_TRUE(client.pollUntil([&] { return !client.listener.events.empty(); }));
  EXPECT_EQ(std::vector<int>{T_GAME_EXITED}, client.listener.events);
  EXPECT_EQ((std::vector<Note>{{M_PLATFORM_STATUS, GetParam().code, GetParam().text}}), client.listener.errors);
}

INSTANTIATE_TEST_SUITE_P(Replies, BadReplyOverHttp, testing::ValuesIn(BadReplies),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(TKSLClientHttp, ARefusedConnectionIsAFailedAttempt) {
  Simulator simulator;
  HttpClient client(simulator.url());
  ASSERT_TRUE(simulator.shutThePort());
  EXPECT_EQ(-1, client.Start(true, 1));
  ASSERT_LE(3U, client.listener.inits.size());
  const Note failed{M_INIT, 1, Failed};
  EXPECT_EQ(failed, client.listener.inits[0]);
  EXPECT_EQ(failed, client.listener.inits[1]);
  EXPECT_EQ((Note{M_INIT, E_COMMUNICATION_ERROR, "Client timed out and stopped!"}), client.listener.inits[2]);
}

TEST(TKSLClientHttp, AServiceThatGoesAwayKeepsTheRegistration) {
  Simulator simulator;
  HttpClient client(simulator.url());
  ASSERT_EQ(0, client.Start(true, 0));
  const int id = client.ID();
  ASSERT_TRUE(simulator.shutThePort());
  ASSERT_TRUE(client.pollUntil([&] { return client.listener.errors.size() >= 2; }));
  EXPECT_EQ((Note{M_POPEVENTS, 1, Failed}), client.listener.errors.back());
  EXPECT_LT(0, id);
  EXPECT_EQ(id, client.ID());
}

TEST(TKSLClientHttp, NotRegisteredLeadsToANewRegistration) {
  Simulator simulator;
  HttpClient client(simulator.url());
  ASSERT_EQ(0, client.Start(true, 0));
  const int id = client.ID();
  simulator.apply({{"do", "bad"},
                   {"method", "game.popEvents"},
                   {"reply", "fault"},
                   {"code", "E_NOT_REGISTERED"},
                   {"text", "who are you"}});
  ASSERT_TRUE(client.pollUntil([&] { return client.ID() > id; }));
  EXPECT_EQ((Note{M_POPEVENTS, E_NOT_REGISTERED, "who are you"}), client.listener.errors.at(0));
}

TEST(TKSLClientHttp, AnAnswerOfHttp10WhoseEndIsThatOfTheConnectionIsUnderstood) {
  Simulator simulator;
  Json step = raw("HTTP/1.0 200 OK\r\nServer: other\r\nContent-type: text/xml\r\n\r\n" + linktest::initReply(70));
  step.update({{"do", "bad"}, {"method", "topscreen.init"}});
  simulator.apply(step);
  HttpClient client(simulator.url());
  ASSERT_EQ(0, client.Start(true, 0));
  EXPECT_EQ(70, client.ID());
}

// A terminal's environment may name a proxy for other programs.
TEST(TKSLClientHttp, TheServiceIsAskedDirectlyWhateverProxyTheEnvironmentNames) {
  const ScopedEnvironment exceptions[] = {{"no_proxy", nullptr}, {"NO_PROXY", nullptr}};
  for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"}) {
    for (const char* dead : {"http://127.0.0.1:1", "127.0.0.1:1", "socks5://127.0.0.1:1"}) {
      SCOPED_TRACE(std::string(name) + "=" + dead);
      const ScopedEnvironment proxy(name, dead);
      Simulator simulator;
      HttpClient client(simulator.url());
      EXPECT_EQ(0, client.Start(true, 0));
      EXPECT_LT(0, client.ID());
      client.SendRequest(M_BYE, 0, KSLCallback(), "");
      ASSERT_TRUE(client.pollUntil([&] { return client.Figures().answers.contains({M_POPEVENTS, E_NO_ERROR}); }));
      EXPECT_TRUE(client.listener.errors.empty()) << testing::PrintToString(client.listener.errors);
    }
  }
}

TEST(TKSLClientHttp, ANewAddressIsThatOfAllFurtherCalls) {
  Simulator first;
  Simulator second;
  HttpClient client(first.url());
  ASSERT_EQ(0, client.Start(true, 0));
  ASSERT_TRUE(first.shutThePort());
  client.SetAddress(second.url());
  EXPECT_TRUE(client.IsRegistered());
  client.listener.errors.clear();
  second.apply({{"do", "event"}, {"id", T_GAME_EXITED}});
  EXPECT_TRUE(client.pollUntil([&] { return !client.listener.events.empty(); }));
  EXPECT_TRUE(client.listener.errors.empty()) << testing::PrintToString(client.listener.errors);
}
