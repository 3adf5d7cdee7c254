// Recordings: as text, between a program and a service, and played back.
#include "tools/kslsim/Recording.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <filesystem>

#include "tools/kslsim/RecordServer.h"
#include "tools/kslsim/Scenario.h"
#include "tools/kslsim/Service.h"

namespace kslsim {
namespace {

const std::string HEAD = "{\"what\":\"kslsim recording\",\"version\":1}\n";

std::string contentOf(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

struct BadRecording {
  const char* name;
  std::string text;
  const char* complaint;
};

class RecordingErrors : public testing::TestWithParam<BadRecording> {};

TEST_P(RecordingErrors, NameLineAndColumn) {
  try {
    Replay replay(GetParam().text, Replay::Pace::Recorded);
    FAIL() << "was accepted";
  } catch (const ScenarioError& error) {
    EXPECT_EQ(std::string(error.what()).substr(0, std::string(GetParam().complaint).size()), GetParam().complaint);
  }
}

INSTANTIATE_TEST_SUITE_P(
  All, RecordingErrors,
  testing::Values(
    BadRecording{"Empty", "", "1:1: this is no recording: the file is empty"},
    BadRecording{"Other", "{}\n",
                 "1:1: this is no recording: the first line has no \"what\": \"kslsim recording\""},
    BadRecording{"List", "[]\n", "1:1: this is no recording: the first line has no \"what\": \"kslsim recording\""},
    BadRecording{"Version", "{\"what\":\"kslsim recording\",\"version\":2}", "1:1: expected \"version\" 1"},
    BadRecording{"NoCall", HEAD + "\n17", "3:1: expected a call, an object"},
    BadRecording{"NoMethod", HEAD + "{\"at\":1,\"ms\":1}", "2:1: \"method\" is missing"},
    BadRecording{"NegativeTime", HEAD + "{\"at\":-1}", "2:7: expected milliseconds, 0 or more"},
    BadRecording{"HugeTime", HEAD + "{\"at\":18446744073709551615,\"ms\":1,\"method\":\"a\",\"params\":[]}",
                 "2:7: expected a number of 64 bits"},
    BadRecording{"NoAnswer", HEAD + "{\"at\":1,\"ms\":1,\"method\":\"a\",\"params\":[]}",
                 "2:1: \"answer\", \"fault\", \"status\" with \"body\" or \"hex\", or \"error\" is missing"},
    BadRecording{"BadFault", HEAD + "{\"at\":1,\"ms\":1,\"method\":\"a\",\"params\":[],\"fault\":{}}",
                 "2:49: expected a number of 32 bits"},
    BadRecording{"OddHex",
                 HEAD + "{\"at\":1,\"ms\":1,\"method\":\"a\",\"params\":[],\"status\":200,\"hex\":\"abc\"}",
                 "2:60: expected hexadecimal digits"},
    BadRecording{"OddStatus",
                 HEAD + "{\"at\":1,\"ms\":1,\"method\":\"a\",\"params\":[],\"status\":99999,\"body\":\"\"}",
                 "2:50: expected a status of HTTP, 100 to 999"},
    BadRecording{"CutOff", HEAD + "{\"at\":1,\"ms\":1,\"meth", "2:21: syntax error"},
    BadRecording{"BadAnswer",
                 HEAD + "{\"at\":1,\"ms\":1,\"method\":\"a\",\"params\":[],\"answer\":[1,\"\\u0001\"]}",
                 "2:53: expected a text without control characters"}),
  [](const auto& info) { return std::string(info.param.name); });

class ReplayTest : public testing::Test {
 protected:
  void line(int at, const char* method, const char* params, const std::string& rest) {
    text += "{\"at\":" + std::to_string(at) + ",\"ms\":1,\"method\":\"" + method + "\",\"params\":" + params + "," +
            rest + "}\n";
  }
  Json ask(const char* method, const Json& params, int64_t now) {
    if (!replay) replay = std::make_unique<Replay>(text, Replay::Pace::Recorded);
    last = replay->answer(method, params, now);
    return valueOf(last).value_or("no value");
  }
  std::string text = HEAD;
  std::unique_ptr<Replay> replay;
  WireAnswer last;
};

TEST_F(ReplayTest, EventsComeWhenTheyCameHoweverOftenTheClientAsks) {
  line(1000, "topscreen.init", "[\"TopScreen\",\"1.5.0\"]", "\"answer\":{\"ID\":4}");
  line(1100, "game.popEvents", "[4]", "\"answer\":null");
  line(1400, "game.popEvents", "[4]", "\"answer\":[{\"eventID\":107,\"context\":1}]");
  line(1700, "game.popEvents", "[4]",
       "\"answer\":[{\"eventID\":107,\"context\":2},{\"eventID\":109,\"context\":null}]");
  line(5000, "game.popEvents", "[4]", "\"answer\":[{\"eventID\":107,\"context\":3}]");
  EXPECT_EQ(ask("topscreen.init", {"TopScreen", "1.5.0"}, 50000)["ID"], 4);
  EXPECT_EQ(ask("game.popEvents", {4}, 50399), nullptr);
  EXPECT_EQ(ask("game.popEvents", {4}, 50400)[0]["context"], 1);
  EXPECT_EQ(ask("game.popEvents", {4}, 50401), nullptr);
  ask("topscreen.init", {"TopScreen", "1.5.0"}, 50500);
  EXPECT_EQ(ask("game.popEvents", {4}, 60000).size(), 3u);
  EXPECT_EQ(ask("game.popEvents", {4}, 70000), nullptr);
}

TEST_F(ReplayTest, AFailureHasItsOwnCall) {
  line(0, "game.popEvents", "[4]", "\"answer\":[{\"eventID\":107,\"context\":1}]");
  line(1, "game.popEvents", "[4]", "\"status\":500,\"body\":\"broken\"");
  line(2, "game.popEvents", "[4]", "\"error\":\"Connection\"");
  line(3, "game.popEvents", "[4]", "\"answer\":{\"faultCode\":-1,\"faultString\":\"gone\"}");
  line(4, "game.popEvents", "[4]", "\"fault\":{\"code\":-500,\"text\":\"a <fault>\"}");
  line(5, "game.popEvents", "[4]", "\"status\":200,\"hex\":\"ff00\"");
  line(6, "game.popEvents", "[4]", "\"answer\":[{\"eventID\":107,\"context\":2}]");
  ask("game.popEvents", {4}, 0);
  EXPECT_EQ(ask("game.popEvents", {4}, 100), "no value");
  EXPECT_EQ(last.status, 500);
  EXPECT_EQ(last.body, "broken");
  ask("game.popEvents", {4}, 100);
  EXPECT_EQ(last.error, "Connection");
  EXPECT_EQ(ask("game.popEvents", {4}, 100)["faultCode"], -1);
  ask("game.popEvents", {4}, 100);
  EXPECT_NE(last.body.find("<fault>"), std::string::npos);
  EXPECT_NE(last.body.find("a &lt;fault&gt;"), std::string::npos);
  ask("game.popEvents", {4}, 100);
  EXPECT_EQ(last.body, std::string("\xff\0", 2));
  EXPECT_EQ(ask("game.popEvents", {4}, 100)[0]["context"], 2);
}

TEST_F(ReplayTest, StateIsThatOfTheMomentAndOthersGoInTheirOrder) {
  line(0, "topscreen.init", "[]", "\"answer\":{\"ID\":1}");
  line(10, "platform.state", "[]", "\"answer\":{\"a\":1}");
  line(20, "topscreen.init", "[]", "\"answer\":{\"ID\":2}");
  line(500, "platform.state", "[]", "\"answer\":{\"a\":{\"$i8\":2}}");
  line(600, "game.getParam", "[1,\"x\"]", "\"answer\":7");
  EXPECT_EQ(ask("platform.state", Json::array(), 1000)["a"], 1);
  EXPECT_EQ(ask("platform.state", Json::array(), 1499)["a"], 1);
  EXPECT_EQ(ask("platform.state", Json::array(), 1500)["a"]["$i8"], 2);
  EXPECT_EQ(ask("topscreen.init", Json::array(), 1500)["ID"], 1);
  EXPECT_EQ(ask("topscreen.init", Json::array(), 1500)["ID"], 2);
  EXPECT_EQ(ask("topscreen.init", Json::array(), 1500)["ID"], 2);
  EXPECT_EQ(ask("game.getParam", {1, "x"}, 1500), 7);
  EXPECT_EQ(ask("game.getParam", {2, "x"}, 1500)["faultCode"], -4);
  EXPECT_EQ(ask("nobody.knows", Json::array(), 1500)["faultCode"], -4);
}

TEST_F(ReplayTest, EventsThatCameByThemselvesGoOutAsTheyWere) {
  const auto body = [](const std::string& data) {
    return "<?xml version='1.0'?><methodResponse><params><param><value>" + data +
           "</value></param></params></methodResponse>";
  };
  const auto events = [&](int context) {
    return body(
      "<array><data><value><struct><member><name>eventID</name><value><i4>107</i4></value></member>"
      "<member><name>context</name><value><i4>" +
      std::to_string(context) + "</i4></value></member></struct></value></data></array>");
  };
  const std::string nil = body("<nil/>");
  line(0, "game.popEvents", "[4]", "\"status\":200,\"body\":\"" + nil + "\"");
  line(100, "game.popEvents", "[4]", "\"status\":200,\"body\":\"" + events(1) + "\"");
  line(101, "game.popEvents", "[4]", "\"answer\":null");
  line(200, "game.popEvents", "[4]", "\"status\":200,\"body\":\"" + events(2) + "\"");
  line(300, "game.popEvents", "[4]", "\"status\":200,\"body\":\"" + events(3) + "\"");
  ask("game.popEvents", {4}, 0);
  EXPECT_EQ(last.body, nil);
  ask("game.popEvents", {4}, 150);
  EXPECT_EQ(last.body, events(1));
  EXPECT_EQ(ask("game.popEvents", {4}, 400).size(), 2u);
}

TEST_F(ReplayTest, AnswersTellHowLongTheyTook) {
  text += R"({"at":0,"ms":20,"method":"topscreen.init","params":[],"answer":{"ID":4}}
{"at":100,"ms":5000,"method":"game.popEvents","params":[4],"answer":null}
{"at":5200,"ms":30,"method":"game.popEvents","params":[4],"answer":[{"eventID":107,"context":1}]}
{"at":5300,"ms":700,"method":"game.popEvents","params":[4],"error":"Read"}
)";
  ask("topscreen.init", Json::array(), 0);
  EXPECT_EQ(last.took, 20);
  ask("game.popEvents", {4}, 50);
  EXPECT_EQ(last.took, 0) << "nothing was recorded yet";
  ask("game.popEvents", {4}, 5250);
  EXPECT_EQ(last.took, 5000) << "the longest of those that make one";
  ask("game.popEvents", {4}, 6000);
  EXPECT_EQ(last.took, 700);
  replay = std::make_unique<Replay>(text, Replay::Pace::AtOnce);
  ask("topscreen.init", Json::array(), 0);
  EXPECT_EQ(last.took, 0);
}

// A service, something that records before it, and a program that only shows what comes back.
class Record : public testing::Test {
 protected:
  void SetUp() override {
    std::string folder = (std::filesystem::temp_directory_path() / "kslsim-record-XXXXXX").string();
    ASSERT_TRUE(mkdtemp(folder.data()));
    file = folder + "/recording";
    std::string error;
    ASSERT_TRUE(service.start(error)) << error;
    recorder =
      std::make_unique<RecordServer>("/KSL", "http://127.0.0.1:" + std::to_string(service.port()) + "/KSL");
    ASSERT_TRUE(recorder->open(file, RecordingWriter::Form::Values));
    ASSERT_TRUE(recorder->start(0));
  }
  // What is in the file so far, line by line.
  std::vector<std::string> linesOfFile() const {
    std::istringstream lines(contentOf(file));
    std::vector<std::string> out;
    for (std::string line; std::getline(lines, line);) out.push_back(line);
    return out;
  }
  void TearDown() override { std::filesystem::remove_all(std::filesystem::path(file).parent_path()); }

  static std::string call(int port, const std::string& method, const std::string& params) {
    httplib::Client client("127.0.0.1", port);
    const auto answer = client.Post(
      "/KSL", "<methodCall><methodName>" + method + "</methodName><params>" + params + "</params></methodCall>",
      "text/xml");
    return answer ? std::to_string(answer->status) + answer->body : "no answer";
  }
  void bad(const char* reply) {
    service.simulator().apply({{"do", "bad"}, {"method", "system.volume"}, {"reply", reply}});
  }

  std::string file;
  Service service{Service::Options{.port = 0, .controlPort = 0}};
  std::unique_ptr<RecordServer> recorder;
};

const std::string INIT =
  "<param><value><string>TopScreen</string></value></param>"
  "<param><value><string>1.5.0</string></value></param>";
const std::string ONE = "<param><value><int>1</int></value></param>";

TEST_F(Record, PassesEverythingOnAndTheReplayGivesTheSameAnswers) {
  std::vector<std::pair<std::string, std::string>> calls{{"topscreen.init", INIT}, {"platform.state", ""}};
  std::vector<std::string> direct;
  for (const auto& [method, params] : calls) direct.push_back(call(recorder->port(), method, params));
  service.simulator().apply(
    {{"do", "add"}, {"level", {{"CurrentPot", 4000000000000}, {"Name", "G\u00f6ld & <Co>"}}}});
  calls.push_back({"game.popEvents", ONE});
  direct.push_back(call(recorder->port(), "game.popEvents", ONE));
  for (const char* reply : {"html", "http500", "fault", "rpcfault", "utf8", "cut", "i8"}) {
    bad(reply);
    calls.push_back({"system.volume", ""});
    direct.push_back(call(recorder->port(), "system.volume", ""));
  }
  recorder->stop();
  EXPECT_NE(direct[2].find("4000000000000"), std::string::npos);

  Service played(Service::Options{.port = 0, .controlPort = 0, .replay = contentOf(file)});
  std::string error;
  ASSERT_TRUE(played.start(error));
  for (size_t i = 0; i < calls.size(); ++i) {
    std::string again = call(played.port(), calls[i].first, calls[i].second);
    // Events wait for their moment.
    for (int tries = 0;
         calls[i].first == "game.popEvents" && again.find("nil") != std::string::npos && tries < 1000; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      again = call(played.port(), calls[i].first, calls[i].second);
    }
    // A value and a fault are written anew, everything else comes back byte by byte.
    const bool isFault = direct[i].find("<fault>") != std::string::npos;
    EXPECT_EQ(again.find("<fault>") != std::string::npos, isFault) << i;
    if (!isFault && !valueOf({200, direct[i].substr(3), ""})) {
      EXPECT_EQ(again, direct[i]) << i;
    }
    EXPECT_EQ(valueOf({200, again.substr(3), ""}), valueOf({200, direct[i].substr(3), ""})) << i;
  }
}

TEST_F(Record, IsReadableText) {
  call(recorder->port(), "topscreen.init", INIT);
  call(recorder->port(), "game.popEvents", ONE);
  service.stop();
  EXPECT_EQ(call(recorder->port(), "game.popEvents", ONE), "no answer");
  recorder->stop();
  const std::vector<std::string> text = linesOfFile();
  ASSERT_EQ(text.size(), 4u);
  EXPECT_EQ(text[0].find("{\"what\":\"kslsim recording\",\"version\":1,\"service\":\"http://127.0.0.1:"), 0u);
  const auto rest = [&](size_t i) { return text[i].substr(text[i].find("\"method\"")); };
  EXPECT_EQ(rest(1).find("\"method\":\"topscreen.init\",\"params\":[\"TopScreen\",\"1.5.0\"],\"answer\":{"), 0u);
  EXPECT_EQ(rest(2), "\"method\":\"game.popEvents\",\"params\":[1],\"answer\":null}");
  EXPECT_EQ(rest(3).find("\"method\":\"game.popEvents\",\"params\":[1],\"error\":\""), 0u);
  EXPECT_EQ(text[1].find("{\"at\":"), 0u);
}

TEST_F(Record, OfTheWireHoldsCallsAndAnswersToTheByte) {
  recorder = std::make_unique<RecordServer>("/KSL", "http://127.0.0.1:" + std::to_string(service.port()) + "/KSL");
  ASSERT_TRUE(recorder->open(file, RecordingWriter::Form::Wire));
  ASSERT_TRUE(recorder->start(0));
  const std::string answer = call(recorder->port(), "topscreen.init", INIT);
  bad("utf8");
  const std::string noText = call(recorder->port(), "system.volume", "");
  call(recorder->port(), "game.popEvents", "<param><value><string>\xFF</string></value></param>");
  recorder->stop();
  const std::vector<std::string> text = linesOfFile();
  ASSERT_EQ(text.size(), 4u);
  const Json init = Json::parse(text[1]);
  EXPECT_EQ(init["call"],
            "<methodCall><methodName>topscreen.init</methodName><params>" + INIT + "</params></methodCall>");
  EXPECT_EQ("200" + init["body"].get<std::string>(), answer);
  EXPECT_FALSE(init.contains("answer"));
  EXPECT_TRUE(Json::parse(text[2]).contains("hex"));
  EXPECT_NE(Json::parse(text[3])["callHex"].get<std::string>().find("ff"), std::string::npos);

  Service played(Service::Options{.port = 0, .controlPort = 0, .replay = contentOf(file)});
  std::string error;
  ASSERT_TRUE(played.start(error));
  EXPECT_EQ(call(played.port(), "topscreen.init", INIT), answer);
  EXPECT_EQ(call(played.port(), "system.volume", ""), noText);
}

TEST_F(Record, IsPlayedBackAsSlowlyAsTheServiceWasUnlessAtOnceIsWanted) {
  using namespace std::chrono_literals;
  using Clock = std::chrono::steady_clock;
  service.simulator().apply(
    {{"do", "bad"}, {"method", "system.volume"}, {"reply", "slow"}, {"ms", 400}, {"calls", 1}});
  call(recorder->port(), "system.volume", "");
  service.simulator().apply({{"do", "bad"}, {"method", "platform.state"}, {"reply", "silent"}, {"ms", 400}});
  EXPECT_EQ(call(recorder->port(), "platform.state", ""), "no answer");
  recorder->stop();
  for (const std::string& line : {linesOfFile().at(1), linesOfFile().at(2)})
    EXPECT_GE(Json::parse(line)["ms"], 400) << line;

  const auto timeOf = [](Service& played, const std::string& method, bool answers) {
    const auto begin = Clock::now();
    EXPECT_EQ(call(played.port(), method, "") != "no answer", answers);
    return Clock::now() - begin;
  };
  std::string error;
  Service slow(Service::Options{.port = 0, .controlPort = 0, .replay = contentOf(file)});
  ASSERT_TRUE(slow.start(error));
  EXPECT_GE(timeOf(slow, "system.volume", true), 400ms);
  EXPECT_GE(timeOf(slow, "platform.state", false), 400ms);

  // A recording of hours: the answers come, or this test does not end in time.
  std::string hours = contentOf(file);
  for (size_t at = 0; (at = hours.find("\"ms\":", at)) != std::string::npos; at += 5) hours.insert(at + 5, "99999");
  Service quick(Service::Options{.port = 0, .controlPort = 0, .replay = hours, .replayAtOnce = true});
  ASSERT_TRUE(quick.start(error));
  EXPECT_LT(timeOf(quick, "system.volume", true), 60s);
  EXPECT_LT(timeOf(quick, "platform.state", false), 60s);

  // Nor do they hold up the end.
  Service stopped(Service::Options{.port = 0, .controlPort = 0, .replay = hours});
  ASSERT_TRUE(stopped.start(error));
  std::thread caller([&] { call(stopped.port(), "system.volume", ""); });
  while (stopped.simulator().log().since(0).empty()) std::this_thread::sleep_for(2ms);
  stopped.stop();
  caller.join();
}

TEST_F(Record, EndsWhileTheServiceIsSilent) {
  service.simulator().apply({{"do", "bad"}, {"method", "system.volume"}, {"reply", "silent"}});
  std::thread caller([this] { EXPECT_EQ(call(recorder->port(), "system.volume", ""), "no answer"); });
  const auto silent = [this] { return service.simulator().log().since(0).back().contains("bad"); };
  while (!silent()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
  recorder->stop();
  caller.join();
  EXPECT_EQ(service.simulator().log().since(0).size(), 2u) << "the service was not asked twice";
  EXPECT_NE(linesOfFile().at(1).find("\"error\""), std::string::npos);
}

TEST_F(Record, ACallWaitsUntilTheFileIsOpen) {
  RecordServer late("/KSL", "http://127.0.0.1:" + std::to_string(service.port()) + "/KSL");
  ASSERT_TRUE(late.start(0));
  std::string answer;
  std::thread caller([&] { answer = call(late.port(), "platform.state", ""); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_TRUE(service.simulator().log().since(0).empty());
  ASSERT_TRUE(late.open(file, RecordingWriter::Form::Values));
  caller.join();
  EXPECT_NE(answer.find("JackpotData"), std::string::npos);
  EXPECT_EQ(linesOfFile().size(), 2u);
}

TEST(RecordServer, WantsAnAddress) {
  for (const char* wrong : {"", "127.0.0.1:9011/KSL", "https://a/KSL", "http:///KSL", "http://a"})
    EXPECT_THROW(RecordServer("/KSL", wrong), std::invalid_argument) << wrong;
}

}  // namespace
}  // namespace kslsim
