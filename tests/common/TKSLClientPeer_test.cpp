// The client and a library that shares no code with it, Python's xmlrpc.client: xmlrpc_texts.py writes the answers
// into a recording, the simulator plays them back byte by byte, a second one in between records what the client
// asks for, and xmlrpc_texts.py reads that.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "LinkTestSupport.h"
#include "tools/kslsim/RecordServer.h"
#include "tools/kslsim/Service.h"
#include "vesperatopscreen/InitData.h"

#include "tests/support/TestPaths.h"

using linktest::waitFor;

namespace {

namespace fs = std::filesystem;

// What xmlrpc_texts.py prints.
std::string python(const char* what, const std::string& file) {
  const std::string command =
    "python3 '" + std::string(testpaths::source) + "/tests/common/xmlrpc_texts.py' " + what + " '" + file + "'";
  FILE* output = popen(command.c_str(), "r");
  if (output == nullptr) {
    ADD_FAILURE() << command;
    return "";
  }
  std::string text;
  char buffer[4096];
  for (size_t count; (count = std::fread(buffer, 1, sizeof buffer, output)) > 0;) text.append(buffer, count);
  EXPECT_EQ(0, pclose(output)) << command;
  return text;
}

std::string contentOf(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class PeerListener : public linktest::NotingListener {
 public:
  int getIDFromInitData(void* data) override { return static_cast<InitData*>(data)->ID; }
  int handleInitResponse(ErrorTypes response, void* responseData) override {
    linktest::NotingListener::handleInitResponse(response, responseData);
    if (response == E_NO_ERROR) {
      const auto* data = static_cast<InitData*>(responseData);
      locale = std::string(data->Locale) + " " + data->Language + " " + data->DecimalSeparator + " " +
               data->ThousandSeparator + " " + std::to_string(data->ThousandGrouping);
    }
    return 0;
  }

  std::string locale;
};

class TKSLClientPeer : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    std::string name = (fs::temp_directory_path() / "topscreen-peer-XXXXXX").string();
    ASSERT_NE(nullptr, mkdtemp(name.data()));
    folder = name;
    python("answers", folder + "/answers");
  }
  static void TearDownTestSuite() {
    std::error_code error;
    fs::remove_all(folder, error);
  }

  void SetUp() override {
    std::string error;
    kslsim::Service::Options options{.port = 0, .controlPort = 0};
    options.replay = contentOf(folder + "/answers");
    service = std::make_unique<kslsim::Service>(options);
    ASSERT_TRUE(service->start(error)) << error;
    recorder = std::make_unique<kslsim::RecordServer>(
      "/KSL", "http://127.0.0.1:" + std::to_string(service->port()) + "/KSL");
    ASSERT_TRUE(recorder->open(recording, kslsim::RecordingWriter::Form::Wire));
    ASSERT_TRUE(recorder->start(0));
    client =
      std::make_unique<TKSLClient>("TopScreen", "http://127.0.0.1:" + std::to_string(recorder->port()) + "/KSL", 0);
    client->SetInitMethod("topscreen.init", ParseInitResponse, DestroyInitObject);
    client->SetListener(&listener);
    client->SetPopRequestFrequency(1);
    ASSERT_EQ(0, client->Start(true, 0)) << (listener.inits.empty() ? "" : listener.inits[0].text);
  }

  // The parameters of all calls of the method so far, as Python has read them from the calls' text.
  std::vector<std::string> calls(const std::string& method) const {
    std::istringstream lines(python("calls", recording));
    std::vector<std::string> chosen;
    for (std::string line; std::getline(lines, line);)
      if (line.starts_with(method + " ")) chosen.push_back(line.substr(method.size() + 1));
    return chosen;
  }

  // Polls until so many calls of the method have been answered.
  bool answered(const std::string& method, int count) {
    return waitFor([&] {
      client->Poll(0);
      const std::string text = contentOf(recording);
      int found = 0;
      for (size_t at = 0; (at = text.find("\"method\":\"" + method, at)) != std::string::npos; ++at) ++found;
      return found >= count;
    });
  }

  static std::string folder;
  const std::string recording = folder + "/recording";
  std::unique_ptr<kslsim::Service> service;
  std::unique_ptr<kslsim::RecordServer> recorder;
  PeerListener listener;
  std::unique_ptr<TKSLClient> client;
};

std::string TKSLClientPeer::folder;

}  // namespace

TEST_F(TKSLClientPeer, Registers) {
  EXPECT_EQ(7, client->ID());
  EXPECT_EQ(std::vector<std::string>{"['TopScreen', '1.5.0']"}, calls("topscreen.init"));
  EXPECT_EQ("de_DE.UTF-8 de , . 3", listener.locale);
}

TEST_F(TKSLClientPeer, BringsEventsOfEveryType) {
  std::vector<std::string> seen;
  listener.onEvent = [&seen](const Event& ev) {
    std::string text = std::to_string(ev.id()) + " ";
    if (ev.id() == T_BET_LIMITS) {
      xmlrpc_int64 current = 0;
      xmlrpc_int64 min = 0;
      xmlrpc_int64 max = 0;
      ev.readEventIntoVariables("{s:I,s:I,s:I,*}", "current", &current, "min", &min, "max", &max);
      text += std::to_string(current) + " " + std::to_string(min) + " " + std::to_string(max);
    } else if (ev.id() == T_INTEGRITY_DATA) {
      text += ev.asString();
    } else if (ev.id() == T_DEMO_MODE) {
      text += ev.asBool() ? "true" : "false";
    } else if (ev.id() == T_PAYTABLE_STATE) {
      text += std::to_string(ev.asInt());
    } else {
      text += std::to_string(xmlrpc_value_type(ev.context()));
    }
    seen.push_back(text);
  };
  ASSERT_TRUE(waitFor([&] {
    client->Poll(0);
    return seen.size() >= 6;
  }));
  EXPECT_EQ((std::vector<std::string>{"105 9", "104 5000000000 -1 9223372036854775807", "103 gr\u00fc\u00df <dich>",
                                      "102 true", "106 6", "107 3"}),
            seen);
  EXPECT_EQ("[7]", calls("game.popEvents").at(0));
  EXPECT_TRUE(listener.errors.empty());
}

TEST_F(TKSLClientPeer, ReadsTheWholeState) {
  PlatformState state;
  std::string failure;
  client->SendRequestSync(
    M_PLATFORM_STATUS,
    [&](void* data, bool isError) {
      if (isError)
        failure = *static_cast<KSLError*>(data)->errorDescription;
      else
        state = *static_cast<PlatformState*>(data);
      return 0;
    },
    "()");
  EXPECT_EQ("", failure);
  EXPECT_EQ(GameRegistryEntry(42, "Fruit", GAMETYPE_VESPERA_SLOTGAME), state.ActiveGame);
  EXPECT_EQ(6000000000, state.MaxBet);
  ASSERT_EQ(2U, state.JackpotData.size());
  EXPECT_EQ(123456789012, state.JackpotData[0].potValue);
  EXPECT_EQ(INT64_MIN, state.JackpotData[1].minBet);
  EXPECT_EQ("\u20ac", state.JackpotData[1].currency);
  EXPECT_EQ(2, state.JackpotData[1].id);
  EXPECT_EQ(std::vector<std::string>{"[]"}, calls("platform.state"));
}

TEST_F(TKSLClientPeer, IsUnderstoodWithEveryType) {
  std::string text;
  client->SendRequestSync(
    M_GETPARAM,
    [&text](void* data, bool isError) {
      EXPECT_FALSE(isError);
      text =
        static_cast<std::string>(xmlrpc_c::value_string(static_cast<GetParamResponseData*>(data)->parameterValue));
      return 0;
    },
    "(iIdbns{s:i})", -1, static_cast<xmlrpc_int64>(5000000000), 1.5, static_cast<xmlrpc_bool>(1), "<&>", "key", 2);
  EXPECT_EQ("caf\u00e9 & <more>", text);
  EXPECT_EQ(std::vector<std::string>{"[7, -1, 5000000000, 1.5, True, None, '<&>', {'key': 2}]"},
            calls("game.getParam"));
}

TEST_F(TKSLClientPeer, TakesPackagesOfEvents) {
  client->BeginEventStack();
  client->PushEvent(G_GAME_START, "");
  client->PushEvent(G_BET, "I", static_cast<xmlrpc_int64>(5000000000));
  client->EndEventStack();
  ASSERT_TRUE(answered("game.pushEvents", 1));
  // The number of the second tells that the answer to the first was understood.
  client->PushEvent(G_GAME_END, "s", "\u20ac & <end>");
  ASSERT_TRUE(answered("game.pushEvents", 2));
  EXPECT_EQ(
    (std::vector<std::string>{"[7, 0, [{'eventID': 1, 'context': None}, {'eventID': 200, 'context': 5000000000}]]",
                              "[7, 1, [{'eventID': 2, 'context': '\u20ac & <end>'}]]"}),
    calls("game.pushEvents"));
  EXPECT_TRUE(listener.errors.empty());
}

TEST_F(TKSLClientPeer, AnUnknownMethodIsAFault) {
  EXPECT_EQ(0, client->SendRequestSync(M_VOLUME, KSLCallback(), "()"));
  ASSERT_EQ(1U, listener.errors.size());
  EXPECT_EQ(E_INTERNAL_ERROR, listener.errors[0].code);
  EXPECT_NE(std::string::npos, listener.errors[0].text.find("system.volume"));
}
