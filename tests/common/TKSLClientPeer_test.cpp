// The client against a service that shares no code with it: Python's xmlrpc.server (wire_peer.py).
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "LinkTestSupport.h"
#include "vesperatopscreen/InitData.h"

#include "tests/support/TestPaths.h"

extern char** environ;

using linktest::waitFor;

namespace {

// The peer's process; it ends when its standard input is closed.
class Peer {
 public:
  Peer() {
    int input[2];
    int output[2];
    if (pipe(input) != 0 || pipe(output) != 0) {
      return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    for (const int end : {input[0], input[1], output[0], output[1]}) {
      posix_spawn_file_actions_addclose(&actions, end);
    }
    const std::string script = std::string(testpaths::source) + "/tests/common/wire_peer.py";
    const char* arguments[] = {"python3", script.c_str(), nullptr};
    if (posix_spawnp(&mProcess, "python3", &actions, nullptr, const_cast<char**>(arguments), environ) != 0) {
      mProcess = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    mInput = input[1];
    FILE* lines = fdopen(output[0], "r");
    char line[32] = "";
    if (std::fgets(line, sizeof line, lines) != nullptr) {
      mPort = std::atoi(line);
    }
    std::fclose(lines);
  }

  ~Peer() {
    close(mInput);
    if (mProcess > 0) {
      waitpid(mProcess, nullptr, 0);
    }
  }

  int port() const { return mPort; }

 private:
  pid_t mProcess = -1;
  int mInput = -1;
  int mPort = 0;
};

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

}  // namespace

class TKSLClientPeer : public testing::Test {
 protected:
  TKSLClientPeer() : client("TopScreen", "http://127.0.0.1:" + std::to_string(peer.port()) + "/KSL", 0) {
    client.SetInitMethod("topscreen.init", ParseInitResponse, DestroyInitObject);
    client.SetListener(&listener);
    client.SetPopRequestFrequency(1);
  }

  void SetUp() override {
    ASSERT_NE(0, peer.port());
    ASSERT_EQ(0, client.Start(true, 0)) << (listener.inits.empty() ? "" : listener.inits[0].text);
  }

  std::string param(const char* name) {
    std::string text;
    client.SendRequestSync(
      M_GETPARAM,
      [&text](void* data, bool isError) {
        text = isError ? *static_cast<KSLError*>(data)->errorDescription
                       : static_cast<std::string>(
                           xmlrpc_c::value_string(static_cast<GetParamResponseData*>(data)->parameterValue));
        return 0;
      },
      "(s)", name);
    return text;
  }

  Peer peer;
  PeerListener listener;
  TKSLClient client;
};

TEST_F(TKSLClientPeer, Registers) {
  EXPECT_EQ(7, client.ID());
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
    client.Poll(0);
    return seen.size() >= 6;
  }));
  seen.resize(6);
  EXPECT_EQ((std::vector<std::string>{"105 9", "104 5000000000 -1 9223372036854775807", "103 gr\u00fc\u00df <dich>",
                                      "102 true", "106 6", "107 3"}),
            seen);
  EXPECT_TRUE(listener.errors.empty());
}

TEST_F(TKSLClientPeer, ReadsTheWholeState) {
  PlatformState state;
  std::string failure;
  client.SendRequestSync(
    M_PLATFORM_STATUS,
    [&](void* data, bool isError) {
      if (isError) {
        failure = *static_cast<KSLError*>(data)->errorDescription;
      } else {
        state = *static_cast<PlatformState*>(data);
      }
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
}

TEST_F(TKSLClientPeer, IsUnderstoodWithEveryType) {
  std::string text;
  client.SendRequestSync(
    M_GETPARAM,
    [&text](void* data, bool isError) {
      EXPECT_FALSE(isError);
      text =
        static_cast<std::string>(xmlrpc_c::value_string(static_cast<GetParamResponseData*>(data)->parameterValue));
      return 0;
    },
    "(iIdbns{s:i})", -1, static_cast<xmlrpc_int64>(5000000000), 1.5, static_cast<xmlrpc_bool>(1), "<&>", "key", 2);
  EXPECT_EQ("[7, -1, 5000000000, 1.5, True, None, '<&>', {'key': 2}]", text);
}

TEST_F(TKSLClientPeer, TakesPackagesOfEvents) {
  client.BeginEventStack();
  client.PushEvent(G_GAME_START, "");
  client.PushEvent(G_BET, "I", static_cast<xmlrpc_int64>(5000000000));
  client.EndEventStack();
  ASSERT_TRUE(waitFor([&] { return param("pushed") != "[]"; }));
  EXPECT_EQ("[[7, 0, [{'eventID': 1, 'context': None}, {'eventID': 200, 'context': 5000000000}]]]",
            param("pushed"));
}

TEST_F(TKSLClientPeer, AnUnknownMethodIsAFault) {
  EXPECT_EQ(0, client.SendRequestSync(M_VOLUME, KSLCallback(), "()"));
  ASSERT_EQ(1U, listener.errors.size());
  EXPECT_EQ(E_INTERNAL_ERROR, listener.errors[0].code);
  EXPECT_NE(std::string::npos, listener.errors[0].text.find("system.volume"));
}
