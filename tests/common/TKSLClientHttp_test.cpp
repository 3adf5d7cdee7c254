// The failures of a real connection: the client over its own HTTP transport against a service on loopback that
// answers with whatever bytes the test wants. After each of them the client goes on.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <thread>

#include "LinkTestSupport.h"

using linktest::errorStruct;
using linktest::faultXml;
using linktest::initReply;
using linktest::memberXml;
using linktest::Note;
using linktest::replyXml;
using linktest::waitFor;

namespace {

std::string http(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nConnection: close\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

// Answers one request per connection with raw bytes, then closes it.
class LoopbackServer {
 public:
  LoopbackServer() : mSocket(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(mSocket, reinterpret_cast<sockaddr*>(&address), length) == 0 && listen(mSocket, 16) == 0 &&
        getsockname(mSocket, reinterpret_cast<sockaddr*>(&address), &length) == 0) {
      mPort = ntohs(address.sin_port);
    }
    mThread = std::thread([this] { serve(); });
  }

  ~LoopbackServer() {
    shutdown(mSocket, SHUT_RDWR);
    mThread.join();
    close(mSocket);
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(mPort) + "/KSL"; }

  // The raw bytes that answer a request of this method.
  void answer(const std::string& method, const std::string& bytes) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mAnswers[method] = bytes;
  }

 private:
  void serve() {
    for (;;) {
      const int connection = accept(mSocket, nullptr, nullptr);
      if (connection < 0) {
        return;
      }
      const std::string bytes = answerTo(readRequest(connection));
      size_t sent = 0;
      while (sent < bytes.size()) {
        const ssize_t count = send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
          break;
        }
        sent += static_cast<size_t>(count);
      }
      close(connection);
    }
  }

  static std::string readRequest(int connection) {
    std::string request;
    char buffer[4096];
    while (request.find("</methodCall>") == std::string::npos) {
      const ssize_t count = recv(connection, buffer, sizeof buffer, 0);
      if (count <= 0) {
        break;
      }
      request.append(buffer, static_cast<size_t>(count));
    }
    return request;
  }

  std::string answerTo(const std::string& request) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mAnswers.find(linktest::methodOf(request));
    return found != mAnswers.end() ? found->second : http(replyXml("<nil/>"));
  }

  int mSocket;
  int mPort = 0;
  std::mutex mMutex;
  std::map<std::string, std::string> mAnswers;
  std::thread mThread;
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
  std::string bytes;
  int code;
  std::string text;
};

void PrintTo(const BadReply& reply, std::ostream* out) { *out << reply.name; }

const std::string Failed = "sendInternal(): Connection failed";
const std::string Refused = "Parsing of platform.state response failed.";

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
  {"InternalServerError", "HTTP/1.1 500 Oops\r\nContent-Length: 4\r\nConnection: close\r\n\r\noops", 1, Failed},
  {"NotFound", "HTTP/1.1 404 No\r\nContent-Length: 0\r\nConnection: close\r\n\r\n", 1, Failed},
  {"Redirect", "HTTP/1.1 301 Away\r\nLocation: /x\r\nContent-Length: 0\r\nConnection: close\r\n\r\n", 1, Failed},
  {"Html", http("<html><body><p>It works!</p></body></html>"), 1, Failed},
  {"PlainText", http("hello"), 1, Failed},
  {"EmptyBody", http(""), 1, Failed},
  {"NoAnswerAtAll", "", 1, Failed},
  {"NoHttp", "what?\r\n\r\n", 1, Failed},
  {"CutInTheHeader", "HTTP/1.1 200 OK\r\nContent-Ty", 1, Failed},
  {"CutInTheBody", cut(http(replyXml("<int>1</int>")), 20), 1, Failed},
  {"CutXml", http(cut(replyXml("<int>1</int>"), 20)), 1, Failed},
  {"WrongEnding", http(replyXml("<int>1</array>")), 1, Failed},
  {"InvalidUtf8", http(replyXml("<string>\xFF\xFE</string>")), 1, Failed},
  {"IntTooLarge", http(replyXml("<int>2147483648</int>")), 1, Failed},
  {"I8OneTooLarge", http(replyXml("<i8>9223372036854775808</i8>")), 1, Failed},
  {"I8OneTooSmall", http(replyXml("<i8>-9223372036854775809</i8>")), 1, Failed},
  {"I8Letters", http(replyXml("<i8>abc</i8>")), 1, Failed},
  {"I8PrefixedTooLarge", http(replyXml("<ex:i8>99999999999999999999</ex:i8>")), 1, Failed},
  {"SixHundredKilobytes", http(replyXml("<string>" + std::string(600 * 1024, 'x') + "</string>")), 1, Failed},
  {"Nested200", http(replyXml(nested(200))), 1, Failed},
  {"Nil", http(replyXml("<nil/>")), E_INTERNAL_ERROR, Refused},
  {"Int", http(replyXml("<int>5</int>")), E_INTERNAL_ERROR, Refused},
  {"Array", http(replyXml(linktest::arrayXml({"<int>5</int>"}))), E_INTERNAL_ERROR, Refused},
  {"EmptyStruct", http(replyXml("<struct></struct>")), E_INTERNAL_ERROR, Refused},
  {"FaultCodeZero", http(replyXml(errorStruct(0, "fine"))), E_INTERNAL_ERROR, Refused},
  {"FaultCodeWithoutText", http(replyXml("<struct>" + memberXml("faultCode", "<int>-6</int>") + "</struct>")),
   E_INTERNAL_ERROR, Refused},
  {"FaultCode", http(replyXml(errorStruct(-6, "full"))), E_SERVER_FULL, "full"},
  {"FaultCodeOutOfTheEnumeration", http(replyXml(errorStruct(12345, "odd %s %n"))), 12345, "odd %s %n"},
  {"Fault", http(faultXml(7, "RPC broken")), E_INTERNAL_ERROR, "RPC broken"},
  {"FaultThatLooksLikeARefusal", http(faultXml(-1, "not registered")), E_INTERNAL_ERROR, "not registered"},
};

class BadReplyOverHttp : public testing::TestWithParam<BadReply> {};

}  // namespace

TEST_P(BadReplyOverHttp, IsOneErrorAndTheClientGoesOn) {
  LoopbackServer server;
  server.answer("topscreen.init", http(initReply(7)));
  server.answer("platform.state", GetParam().bytes);
  HttpClient client(server.url());
  ASSERT_EQ(0, client.Start(true, 0));

  client.SendRequest(M_PLATFORM_STATUS, 0, KSLCallback(), "");
  ASSERT_TRUE(client.pollUntil([&] { return !client.listener.errors.empty(); }));
  EXPECT_EQ(7, client.ID());
  EXPECT_TRUE(client.CommunicationEnabled());

  server.answer("game.popEvents", http(replyXml(linktest::arrayXml({linktest::eventXml(105, "<nil/>")}))));
  EXPECT_TRUE(client.pollUntil([&] { return !client.listener.events.empty(); }));
  EXPECT_EQ((std::vector<Note>{{M_PLATFORM_STATUS, GetParam().code, GetParam().text}}), client.listener.errors);
}

INSTANTIATE_TEST_SUITE_P(Replies, BadReplyOverHttp, testing::ValuesIn(BadReplies),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(TKSLClientHttp, ARefusedConnectionIsAFailedAttempt) {
  std::string url;
  {
    const LoopbackServer server;
    url = server.url();
  }
  HttpClient client(url);
  EXPECT_EQ(-1, client.Start(true, 1));
  ASSERT_LE(3U, client.listener.inits.size());
  const Note failed{M_INIT, 1, Failed};
  EXPECT_EQ(failed, client.listener.inits[0]);
  EXPECT_EQ(failed, client.listener.inits[1]);
  EXPECT_EQ((Note{M_INIT, E_COMMUNICATION_ERROR, "Client timed out and stopped!"}), client.listener.inits[2]);
}

TEST(TKSLClientHttp, AServiceThatGoesAwayKeepsTheRegistration) {
  auto server = std::make_unique<LoopbackServer>();
  server->answer("topscreen.init", http(initReply(7)));
  HttpClient client(server->url());
  ASSERT_EQ(0, client.Start(true, 0));
  server.reset();
  ASSERT_TRUE(client.pollUntil([&] { return client.listener.errors.size() >= 2; }));
  EXPECT_EQ((Note{M_POPEVENTS, 1, Failed}), client.listener.errors.back());
  EXPECT_EQ(7, client.ID());
}

TEST(TKSLClientHttp, NotRegisteredLeadsToANewRegistration) {
  LoopbackServer server;
  server.answer("topscreen.init", http(initReply(7)));
  HttpClient client(server.url());
  ASSERT_EQ(0, client.Start(true, 0));
  server.answer("topscreen.init", http(initReply(8)));
  server.answer("game.popEvents", http(replyXml(errorStruct(E_NOT_REGISTERED, "who are you"))));
  ASSERT_TRUE(client.pollUntil([&] { return client.ID() == 8; }));
  EXPECT_EQ((Note{M_POPEVENTS, E_NOT_REGISTERED, "who are you"}), client.listener.errors.at(0));
}
