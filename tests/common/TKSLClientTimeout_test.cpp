// Calls that take too long, on a real connection: a service that is silent, and one whose answer has no end.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <atomic>
#include <csignal>
#include <thread>

#include "LinkTestSupport.h"

using linktest::FakeTransport;
using linktest::initReply;
using linktest::replyXml;
using linktest::TestClient;
using linktest::waitFor;

namespace {

// An HTTP service on a free port. Registrations are answered; what any other call gets is set, and after it the
// connection stays open.
class Peer {
 public:
  enum Answer { SILENCE, ENDLESS, GOOD };

  Peer() {
    std::signal(SIGPIPE, SIG_IGN);
    mListener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(bind(mListener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(mListener, 16), 0);
    socklen_t length = sizeof address;
    getsockname(mListener, reinterpret_cast<sockaddr*>(&address), &length);
    mPort = ntohs(address.sin_port);
    mThread = std::thread([this] { accept(); });
  }
  ~Peer() {
    mEnds = true;
    mThread.join();
    close(mListener);
  }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(mPort) + "/KSL"; }

  std::atomic<Answer> answer{SILENCE};
  std::atomic<int> connections{0}, calls{0}, left{0};
  std::atomic<size_t> sent{0};

 private:
  void accept() {
    std::vector<std::thread> threads;
    while (!mEnds) {
      pollfd waiting{mListener, POLLIN, 0};
      if (::poll(&waiting, 1, 10) <= 0) continue;
      const int connection = ::accept(mListener, nullptr, nullptr);
      ++connections;
      threads.emplace_back([this, connection] { serve(connection); });
    }
    for (std::thread& thread : threads) thread.join();
  }

  // False when the other side has gone, or the peer ends.
  bool receive(int connection, std::string& text) {
    while (!mEnds) {
      pollfd waiting{connection, POLLIN, 0};
      if (::poll(&waiting, 1, 10) <= 0) continue;
      char piece[4096];
      const ssize_t count = recv(connection, piece, sizeof piece, 0);
      if (count <= 0) return false;
      text.append(piece, static_cast<size_t>(count));
      return true;
    }
    return false;
  }

  void serve(int connection) {
    std::string text;
    bool stays = true;
    while (stays && receive(connection, text)) {
      if (text.find("</methodCall>") == std::string::npos) continue;
      const bool registers = linktest::methodOf(text) == "topscreen.init";
      text.clear();
      if (!registers) ++calls;
      if (registers || answer == GOOD) {
        const std::string body = registers ? initReply(7) : replyXml("<int>5</int>");
        const std::string reply =
          "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: " + std::to_string(body.size()) +
          "\r\n\r\n" + body;
        stays = send(connection, reply.data(), reply.size(), 0) > 0;
      } else if (answer == ENDLESS) {
        std::string piece = "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n\r\n<?xml version=\"1.0\"?>";
        for (; !mEnds && stays; piece.assign(1000, ' ')) {
          stays = send(connection, piece.data(), piece.size(), 0) > 0;
          sent += piece.size();
          usleep(1000);
        }
      }
    }
    ++left;
    close(connection);
  }

  int mListener = -1, mPort = 0;
  std::atomic<bool> mEnds{false};
  std::thread mThread;
};

class TimedClient : public TKSLClient {
 public:
  TimedClient(const std::string& url, unsigned int timeout) : TKSLClient("TopScreen", url, 0) {
    SetInitMethod("topscreen.init", linktest::parseTestInit, linktest::destroyTestInit);
    SetListener(&listener);
    SetPopRequestFrequency(3600000);
    SetCallTimeout(timeout);
    mDelay = [](Uint32) { SDL_Delay(1); };
  }
  ~TimedClient() { Stop(); }

  // The code of the answer to one call; 0 for a good one, -1 when there is none in time.
  int call() {
    int code = -1;
    const auto answered = [&](void* data, bool isError) {
      code = isError ? static_cast<int>(static_cast<KSLError*>(data)->errorCode) : 0;
      return 0;
    };
    SendRequest(M_DENOMINATION, 9, answered, "");
    pollUntil([&] { return code != -1; });
    return code;
  }
  bool pollUntil(const std::function<bool()>& condition) {
    return waitFor([&] {
      Poll(0);
      return condition();
    });
  }
  linktest::NotingListener listener;
};

class Timeout : public testing::TestWithParam<Peer::Answer> {};

TEST_P(Timeout, IsATransportFailureAndTheNextCallGoesToANewConnection) {
  Peer peer;
  peer.answer = GetParam();
  TimedClient client(peer.url(), 200);
  ASSERT_EQ(client.Start(true, 0), 0);
  EXPECT_EQ(client.call(), 1) << "as any call that the transport has failed";
  EXPECT_TRUE(waitFor([&] { return peer.left == 1; })) << "the old connection is closed";
  const size_t sent = peer.sent;
  peer.answer = Peer::GOOD;
  EXPECT_EQ(client.call(), 0);
  EXPECT_EQ(peer.connections, 2);
  EXPECT_EQ(peer.sent, sent) << "nothing more of the body without end";
}

INSTANTIATE_TEST_SUITE_P(All, Timeout, testing::Values(Peer::SILENCE, Peer::ENDLESS), [](const auto& info) {
  return info.param == Peer::SILENCE ? "OfASilentService" : "OfAnAnswerWithoutEnd";
});

TEST(TKSLClientTimeout, ACallInTimeIsNoneHoweverLongTheClientWasIdle) {
  Peer peer;
  peer.answer = Peer::GOOD;
  TimedClient client(peer.url(), 60000);
  ASSERT_EQ(client.Start(true, 0), 0);
  EXPECT_EQ(client.call(), 0);
  EXPECT_EQ(client.call(), 0);
  EXPECT_EQ(peer.connections, 1);
}

// ---- the clock of it, over a transport that keeps what it is told to look at

class InterruptedTransport : public FakeTransport {
 public:
  void setInterrupt(int* interrupt) override {
    flag = interrupt;
    ++sets;
  }
  int* flag = nullptr;
  int sets = 0;
};

class Interrupt : public testing::Test {
 protected:
  Interrupt() : wire(new InterruptedTransport), client(wire, 0) {
    client.SetPopRequestFrequency(3600000);
    wire->answer("system.volume", [this](const std::string&) {
      const std::atomic_ref<int> flag(*wire->flag);
      atBegin = flag;
      inTheAir = true;
      waitFor([&] { return flag != 0 || go; });
      interrupted = flag;
      inTheAir = false;
      return replyXml("<int>5</int>");
    });
  }
  ~Interrupt() override { client.Stop(); }
  void call() {
    interrupted = -1;
    go = false;
    client.SendRequest(M_VOLUME, 9, KSLCallback(), "");
    ASSERT_TRUE(waitFor([&] { return inTheAir.load(); }));
  }
  bool ends() {
    return waitFor([&] { return interrupted != -1; });
  }

  InterruptedTransport* wire;
  TestClient client;
  std::atomic<bool> inTheAir{false}, go{false};
  std::atomic<int> interrupted{-1}, atBegin{-1};
};

TEST_F(Interrupt, ComesWithTheFirstPollBehindTheTimeAndGoesWithTheCall) {
  client.SetCallTimeout(100);
  ASSERT_TRUE(client.startRegistered());
  call();
  const Uint32 begun = SDL_GetTicks();
  while (interrupted == -1) {
    client.Poll(0);
    SDL_Delay(1);
  }
  EXPECT_EQ(interrupted, 1);
  EXPECT_GE(SDL_GetTicks() - begun, 90u);
  call();
  EXPECT_EQ(atBegin, 0);
  go = true;
  ASSERT_TRUE(ends());
  EXPECT_EQ(interrupted, 0);
}

TEST_F(Interrupt, DoesNotComeInTime) {
  client.SetCallTimeout(1000000);
  ASSERT_TRUE(client.startRegistered());
  call();
  for (int i = 0; i < 100; ++i) client.Poll(0);
  go = true;
  ASSERT_TRUE(ends());
  EXPECT_EQ(interrupted, 0);
}

TEST_F(Interrupt, IsNotSpokenOfWithoutATimeAndTakenBackWithTheTime) {
  EXPECT_EQ(wire->sets, 0);
  client.SetCallTimeout(5);
  EXPECT_NE(wire->flag, nullptr);
  client.SetCallTimeout(0);
  EXPECT_EQ(wire->flag, nullptr);
  EXPECT_EQ(wire->sets, 2);
}

}  // namespace
