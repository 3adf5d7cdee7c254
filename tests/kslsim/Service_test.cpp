// The simulator with its ports, as a test or a bench runs it in its own process.
#include "tools/kslsim/Service.h"

#include <gtest/gtest.h>
#include <httplib.h>

namespace kslsim {
namespace {

using namespace std::chrono_literals;

class ServiceTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(service.start(error)) << error;
    rpc = std::make_unique<httplib::Client>("127.0.0.1", service.port());
    control = std::make_unique<httplib::Client>("127.0.0.1", service.controlPort());
    rpc->set_read_timeout(20);
  }

  httplib::Result call(const std::string& method, const std::string& params) {
    return rpc->Post("/KSL",
                     "<?xml version=\"1.0\"?><methodCall><methodName>" + method + "</methodName><params>" + params +
                       "</params></methodCall>",
                     "text/xml");
  }
  httplib::Result state() { return call("platform.state", ""); }
  int order(const std::string& step) { return control->Post("/api/do", step, "application/json")->status; }

  template <typename Condition>
  bool within(std::chrono::milliseconds bound, Condition condition) {
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(2ms);
    }
    return true;
  }

  Service service{{0, 0, "/KSL", ""}};
  std::unique_ptr<httplib::Client> rpc, control;
};

TEST_F(ServiceTest, AnswersACallInXml) {
  const auto answer = state();
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 200);
  EXPECT_NE(answer->body.find("<name>JackpotData</name>"), std::string::npos);
  EXPECT_NE(answer->body.find("<i8>0</i8>"), std::string::npos);
}

TEST_F(ServiceTest, OnlyItsPathIsServed) {
  EXPECT_EQ(rpc->Post("/other", "", "text/xml")->status, 404);
  EXPECT_EQ(rpc->Get("/KSL")->status, 404);
}

TEST(Service, PathIsNoPattern) {
  Service service({0, 0, "/K.L(+[", ""});
  std::string error;
  ASSERT_TRUE(service.start(error)) << error;
  httplib::Client rpc("127.0.0.1", service.port());
  EXPECT_EQ(rpc.Post("/K.L(+[", "x", "text/xml")->status, 200);
  EXPECT_EQ(rpc.Post("/KSL(+[", "x", "text/xml")->status, 404);
}

struct WrongCall {
  const char* method;
  const char* params;
  const char* code;
};

TEST_F(ServiceTest, WrongCallsGetAFaultAndAnEntry) {
  const std::string one = "<param><value><int>1</int></value></param>";
  for (const WrongCall& wrong :
       {WrongCall{"game.popEvents", "", "-501"}, WrongCall{"nobody.knows", "", "-506"},
        WrongCall{"platform.state", one.c_str(), "-501"}, WrongCall{"topscreen.init", one.c_str(), "-501"}}) {
    const auto answer = call(wrong.method, wrong.params);
    ASSERT_TRUE(answer);
    EXPECT_NE(answer->body.find("<fault>"), std::string::npos) << wrong.method;
    EXPECT_NE(answer->body.find(wrong.code), std::string::npos) << answer->body;
    EXPECT_EQ(service.simulator().log().since(0).back()["method"], wrong.method);
  }
}

TEST_F(ServiceTest, TextThatWouldEndTheLibraryIsRefused) {
  const auto answer = call("game.popEvents", "<param><value><i8>9223372036854775808</i8></value></param>");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 400);
  EXPECT_EQ(state()->status, 200);
}

TEST_F(ServiceTest, GarbageAndOversizeAreSurvived) {
  EXPECT_NE(rpc->Post("/KSL", "garbage", "text/xml")->body.find("-503"), std::string::npos);
  EXPECT_NE(rpc->Post("/KSL", "", "text/xml")->body.find("-503"), std::string::npos);
  const auto large = rpc->Post("/KSL", std::string(600 * 1024, 'x'), "text/xml");
  EXPECT_TRUE(!large || large->status == 413);
  EXPECT_EQ(state()->status, 200);
}

TEST_F(ServiceTest, BadRepliesAreWhatTheyAreCalled) {
  const auto bad = [this](const std::string& name) {
    const std::string fault = name.ends_with("fault") ? R"("code": -3, "text": "a<b", )" : "";
    EXPECT_EQ(order(R"({"do": "bad", "method": "platform.state", )" + fault + R"("reply": ")" + name + "\"}"), 200);
    return state();
  };
  EXPECT_EQ(bad("http500")->status, 500);
  EXPECT_EQ(bad("html")->get_header_value("Content-Type"), "text/html");
  EXPECT_FALSE(bad("cut"));
  EXPECT_FALSE(bad("refuse"));
  EXPECT_NE(bad("type")->body.find("<string>"), std::string::npos);
  EXPECT_NE(bad("empty")->body.find("<struct></struct>"), std::string::npos);
  EXPECT_NE(bad("fault")->body.find("<params>"), std::string::npos);
  EXPECT_NE(bad("fault")->body.find("<int>-3</int></value></member><member><name>faultString</name><value>"
                                    "<string>a&lt;b</string>"),
            std::string::npos);
  EXPECT_NE(bad("rpcfault")->body.find("<fault>"), std::string::npos);
  EXPECT_GT(bad("large")->body.size(), 600u * 1024);
  EXPECT_NE(bad("i8")->body.find("<i8>9223372036854775808</i8>"), std::string::npos);
  const std::string deep = bad("deep")->body;
  size_t arrays = 0;
  for (size_t at = deep.find("<array>"); at != deep.npos; at = deep.find("<array>", at + 1)) ++arrays;
  EXPECT_EQ(arrays, 200u);
  EXPECT_EQ(state()->status, 200);
}

TEST_F(ServiceTest, SlowReplyIsTheRightOneLate) {
  ASSERT_EQ(order(R"({"do": "bad", "method": "platform.state", "reply": "slow", "ms": 300})"), 200);
  const auto begin = std::chrono::steady_clock::now();
  const auto answer = state();
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 300ms);
  ASSERT_TRUE(answer);
  EXPECT_NE(answer->body.find("JackpotData"), std::string::npos);
}

TEST_F(ServiceTest, SlowReplyDoesNotHoldUpTheEnd) {
  ASSERT_EQ(order(R"({"do": "bad", "method": "platform.state", "reply": "slow", "ms": 60000})"), 200);
  std::thread caller([this] { state(); });
  ASSERT_TRUE(within(5s, [this] { return service.simulator().log().since(0).size() >= 2; }));
  const auto begin = std::chrono::steady_clock::now();
  service.stop();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
  caller.join();
}

TEST_F(ServiceTest, DownShutsThePortAndKeptConnectionsAndComesBackOnTheSamePort) {
  rpc->set_keep_alive(true);
  ASSERT_TRUE(state());
  const int port = service.port();
  ASSERT_EQ(order(R"({"do": "down"})"), 200);
  ASSERT_TRUE(within(5s, [this] { return !service.listening(); }));
  EXPECT_FALSE(state());
  ASSERT_EQ(order(R"({"do": "up"})"), 200);
  ASSERT_TRUE(within(5s, [this] { return service.listening(); }));
  EXPECT_EQ(service.port(), port);
  EXPECT_TRUE(state());
}

TEST_F(ServiceTest, TakenPortIsAnError) {
  Service second({service.port(), 0, "/KSL", ""});
  std::string error;
  EXPECT_FALSE(second.start(error));
  EXPECT_EQ(error, "port " + std::to_string(service.port()) + " is taken");
  Service third({0, service.controlPort(), "/KSL", ""});
  EXPECT_FALSE(third.start(error));
  EXPECT_EQ(error, "control port " + std::to_string(service.controlPort()) + " is taken");
}

TEST_F(ServiceTest, ControlTellsWhatIsWrongWithAStep) {
  const auto answer = control->Post("/api/do", "{\"do\":\"up\",\n\"x\":1}", "application/json");
  EXPECT_EQ(answer->status, 400);
  EXPECT_EQ(Json::parse(answer->body)["error"], "2:5: \"up\" takes no \"x\"");
  EXPECT_EQ(order("{"), 400);
  EXPECT_EQ(order("[]"), 400);
  EXPECT_EQ(control->Get("/api/log?since=x")->status, 400);
}

TEST_F(ServiceTest, ControlTakesALongStepHoweverItIsCalledAndSaysWhatIsTooLong) {
  const auto send = [this](size_t length) {
    const Json step{{"do", "set"}, {"state", {{"JackpotErrorString", std::string(length, 'x')}}}};
    return control->Post("/api/do", step.dump(), "application/x-www-form-urlencoded");  // as curl does
  };
  EXPECT_EQ(send(100000)->status, 200);
  EXPECT_EQ(service.simulator().report()["state"]["JackpotErrorString"].get<std::string>().size(), 100000u);
  // The answer to one that is refused before it is read may be lost with its connection.
  const auto refused = send(600000);
  if (refused) {
    EXPECT_EQ(refused->status, 413);
    EXPECT_EQ(Json::parse(refused->body)["error"], "a step has at most 512 KiB");
  }
  EXPECT_EQ(Json::parse(control->Get("/api/do")->body)["error"], "there is nothing at this address");
}

TEST_F(ServiceTest, ControlShowsStateAndLog) {
  ASSERT_EQ(order(R"({"do": "add"})"), 200);
  EXPECT_EQ(Json::parse(control->Get("/api/state")->body)["state"]["JackpotData"].size(), 1u);
  state();
  const Json log = Json::parse(control->Get("/api/log?since=1")->body);
  ASSERT_EQ(log.size(), 1u);
  EXPECT_EQ(log[0]["method"], "platform.state");
  EXPECT_EQ(log[0]["params"], Json::array());
  EXPECT_EQ(log[0]["answer"]["CurrentBet"]["$i8"], 0);
}

TEST_F(ServiceTest, ThreeHundredKeptConnectionsAreServedAtOnce) {
  std::vector<std::unique_ptr<httplib::Client>> clients;
  for (int i = 0; i < 300; ++i) {
    clients.push_back(std::make_unique<httplib::Client>("127.0.0.1", service.port()));
    clients.back()->set_keep_alive(true);
    clients.back()->set_read_timeout(5);
    ASSERT_TRUE(
      clients.back()->Post("/KSL", "<methodCall><methodName>platform.state</methodName></methodCall>", "text/xml"))
      << i;
  }
}

}  // namespace
}  // namespace kslsim
