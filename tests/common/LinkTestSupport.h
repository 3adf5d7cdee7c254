#pragma once

#include <SDL.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>
#include <xmlrpc-c/client_transport.hpp>

#include "common/TKSLClient.h"
#include "common/TKSLReturnStructures.h"
#include "common/XmlRpcSupport.h"

// What the tests of the link share: a transport that answers from a script, a listener that takes notes, and a
// client between them.
namespace linktest {

// Waits until the condition holds; false when it does not within half a minute.
inline bool waitFor(const std::function<bool()>& condition) {
  const Uint64 start = SDL_GetPerformanceCounter();
  const Uint64 limit = SDL_GetPerformanceFrequency() * 30;
  while (!condition()) {
    if (SDL_GetPerformanceCounter() - start > limit) return false;
    SDL_Delay(1);
  }
  return true;
}

inline std::string replyXml(const std::string& value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<methodResponse><params><param><value>" + value +
         "</value></param></params></methodResponse>";
}

inline std::string faultXml(int code, const std::string& text) {
  return "<?xml version=\"1.0\"?><methodResponse><fault><value><struct><member><name>faultCode</name><value><int>" +
         std::to_string(code) + "</int></value></member><member><name>faultString</name><value><string>" + text +
         "</string></value></member></struct></value></fault></methodResponse>";
}

inline std::string memberXml(const std::string& name, const std::string& value) {
  return "<member><name>" + name + "</name><value>" + value + "</value></member>";
}

inline std::string errorStruct(int code, const std::string& text) {
  return "<struct>" + memberXml("faultCode", "<int>" + std::to_string(code) + "</int>") +
         memberXml("faultString", "<string>" + text + "</string>") + "</struct>";
}

inline std::string arrayXml(const std::vector<std::string>& items) {
  std::string xml = "<array><data>";
  for (const std::string& item : items) xml += "<value>" + item + "</value>";
  return xml + "</data></array>";
}

inline std::string eventXml(int id, const std::string& context) {
  return "<struct>" + memberXml("eventID", "<int>" + std::to_string(id) + "</int>") +
         memberXml("context", context) + "</struct>";
}

// The value as the library's own parser reads it.
inline xmlrpc_c::value parseValue(const std::string& valueXml) {
  const std::string xml = replyXml(valueXml);
  XmlRpcEnv env;
  xmlrpc_value* value = nullptr;
  int faultCode = 0;
  const char* faultString = nullptr;
  xmlrpc_parse_response2(env.get(), xml.c_str(), xml.size(), &value, &faultCode, &faultString);
  const XmlRpcReference reference(value);
  return value == nullptr ? xmlrpc_c::value() : xmlrpc_c::value(value);
}

// The value as the library writes it, without white space between the elements.
inline std::string textOf(const xmlrpc_c::value& value) {
  XmlRpcEnv env;
  xmlrpc_mem_block* block = xmlrpc_mem_block_new(env.get(), 0);
  const XmlRpcReference reference(value.cValue());
  xmlrpc_serialize_value2(env.get(), block, reference.get(), xmlrpc_dialect_i8);
  std::string text(static_cast<const char*>(xmlrpc_mem_block_contents(block)), xmlrpc_mem_block_size(block));
  xmlrpc_mem_block_free(block);
  for (size_t at; (at = text.find("\r\n")) != std::string::npos;) text.erase(at, 2);
  return text;
}

// A request exactly as the library writes it.
inline std::string requestXml(const std::string& method, const std::vector<std::string>& params) {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<methodCall>\r\n<methodName>" + method +
                    "</methodName>\r\n<params>\r\n";
  for (const std::string& param : params) xml += "<param><value>" + param + "</value></param>\r\n";
  return xml + "</params>\r\n</methodCall>\r\n";
}

inline std::string methodOf(const std::string& request) {
  const std::string open = "<methodName>";
  const size_t start = request.find(open) + open.size();
  return request.substr(start, request.find("</methodName>") - start);
}

// The parameters of a request as the library's own parser reads them.
inline xmlrpc_c::carray paramsOf(const std::string& request) {
  XmlRpcEnv env;
  const char* method = nullptr;
  xmlrpc_value* params = nullptr;
  xmlrpc_parse_call(env.get(), request.data(), request.size(), &method, &params);
  if (env.failed()) return {};
  const XmlRpcReference reference(params);
  std::free(const_cast<char*>(method));
  return xmlrpc_c::value_array(xmlrpc_c::value(params)).vectorValueValue();
}

// Answers per method from a script, on the thread that sends; an answer may throw, or wait.
class FakeTransport : public xmlrpc_c::clientXmlTransport {
 public:
  using Answer = std::function<std::string(const std::string& request)>;

  void call(xmlrpc_c::carriageParm* const, std::string const& callXml, std::string* const responseXmlP) override {
    Answer answer;
    {
      const std::lock_guard<std::mutex> lock(mMutex);
      mRequests.push_back(callXml);
      const auto found = mAnswers.find(methodOf(callXml));
      if (found != mAnswers.end()) answer = found->second;
    }
    *responseXmlP = answer ? answer(callXml) : replyXml("<nil/>");
  }

  void answer(const std::string& method, const Answer& answer) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mAnswers[method] = answer;
  }

  void answer(const std::string& method, const std::string& xml) {
    answer(method, [xml](const std::string&) { return xml; });
  }

  std::vector<std::string> requests() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mRequests;
  }

  std::vector<std::string> requests(const std::string& method) const {
    std::vector<std::string> chosen;
    for (const std::string& request : requests())
      if (methodOf(request) == method) chosen.push_back(request);
    return chosen;
  }

 private:
  mutable std::mutex mMutex;
  std::map<std::string, Answer> mAnswers;
  std::vector<std::string> mRequests;
};

// Holds a thread back until it is opened.
class Gate {
 public:
  void open() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mOpen = true;
    mChanged.notify_all();
  }
  void pass() {
    std::unique_lock<std::mutex> lock(mMutex);
    ++mArrived;
    mChanged.wait(lock, [this] { return mOpen; });
  }
  int arrived() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mArrived;
  }

 private:
  mutable std::mutex mMutex;
  std::condition_variable mChanged;
  bool mOpen = false;
  int mArrived = 0;
};

// Does something on a thread of its own, to see whether that is held up.
class Beside {
 public:
  explicit Beside(const std::function<void()>& task)
    : mThread([this, task] {
        mBegun = true;
        task();
        mEnded = true;
      }) {}
  // Ends the process when the thread is held up for good, for then it cannot be ended otherwise.
  ~Beside() {
    if (!ends()) {
      std::printf("a thread is held up for good\n");
      std::abort();
    }
    mThread.join();
  }
  bool ends() const {
    return waitFor([this] { return mEnded.load(); });
  }
  // Whether it does not end in time that it would not need.
  bool isHeldUp() const {
    if (!waitFor([this] { return mBegun.load(); })) return false;
    for (int n = 0; n < 50 && !mEnded; ++n) SDL_Delay(1);
    return !mEnded;
  }

 private:
  std::atomic<bool> mBegun{false}, mEnded{false};
  std::thread mThread;
};

struct TestInitData {
  int ID = 0;
};

inline void* parseTestInit(const xmlrpc_c::value& toParse, int& parseStatus) {
  auto* data = new TestInitData;
  try {
    xmlrpc_c::cstruct members = xmlrpc_c::value_struct(toParse);
    data->ID = xmlrpc_c::value_int(members["ID"]);
  } catch (...) {
    parseStatus = 1;
  }
  return data;
}

inline void destroyTestInit(void* data) { delete static_cast<TestInitData*>(data); }

inline std::string initReply(int id) {
  return replyXml("<struct>" + memberXml("ID", "<int>" + std::to_string(id) + "</int>") + "</struct>");
}

struct Note {
  MethodType method;
  int code;
  std::string text;

  bool operator==(const Note&) const = default;
};

inline void PrintTo(const Note& note, std::ostream* out) {
  *out << "{" << note.method << ", " << note.code << ", \"" << note.text << "\"}";
}

// Takes notes of everything on the thread that polls. The identifier alone is read elsewhere.
class NotingListener : public TKSLListener {
 public:
  int getIDFromInitData(void* data) override { return static_cast<TestInitData*>(data)->ID; }
  int handleInitResponse(ErrorTypes response, void* responseData) override {
    inits.push_back(Note{M_INIT, response, ""});
    if (response != E_NO_ERROR)
      inits.back().text = *static_cast<KSLError*>(responseData)->errorDescription;
    else if (responseData == nullptr)
      inits.back().text = "no record";
    return 0;
  }
  int handlePlatformEvent(const Event& ev) override {
    if (onEvent) onEvent(ev);
    events.push_back(ev.id());
    return 0;
  }
  using TKSLListener::handleError;
  int handleError(MethodType method, ErrorTypes err, const std::string& description) override {
    errors.push_back(Note{method, err, description});
    return 0;
  }
  void handleClientDied() override { ++died; }
  void handleTimeout(bool timedOut) override { timeouts.push_back(timedOut); }

  std::vector<Note> inits;
  std::vector<Note> errors;
  std::vector<int> events;
  std::vector<bool> timeouts;
  std::function<void(const Event&)> onEvent;
  int died = 0;
};

// The client over a transport of the test's. What it does shows in the requests that arrive there, in the notes of
// its listener and in its public functions; only the pause between two registrations can be replaced. Such pauses
// take no time here and are noted; the notes are read once the thread has stopped or waits.
class TestClient : public TKSLClient {
 public:
  explicit TestClient(unsigned int numExtraMethods) : TestClient(new FakeTransport, numExtraMethods) {}

  TestClient(FakeTransport* transport, unsigned int numExtraMethods)
    : TKSLClient("TopScreen", "http://127.0.0.1:1/KSL", numExtraMethods,
                 xmlrpc_c::clientXmlTransportPtr(transport)),
      wire(*transport) {
    SetInitMethod("topscreen.init", parseTestInit, destroyTestInit);
    SetListener(&listener);
    wire.answer("topscreen.init", initReply(7));
    wire.answer("game.pushEvents", replyXml("<int>1</int>"));
    mDelay = [this](Uint32 milliseconds) {
      {
        const std::lock_guard<std::mutex> lock(pausesMutex);
        pauses.push_back(milliseconds);
      }
      SDL_Delay(1);
    };
  }

  // The thread works on members of this class.
  ~TestClient() { Stop(); }

  using TKSLClient::mDelay;

  std::vector<Uint32> pausesSoFar() const {
    const std::lock_guard<std::mutex> lock(pausesMutex);
    return pauses;
  }

  // A thread sends what is queued, registered or not, and is stopped: the answers wait for Poll then. The requests,
  // without one that is put behind them all.
  std::vector<std::string> sendAll() {
    const size_t before = wire.requests().size();
    const size_t ends = wire.requests("game.shiftCounter").size();
    SendRequest(M_SHIFTCOUNTER, std::numeric_limits<int>::min(), KSLCallback(), "");
    runUntil([&] { return wire.requests("game.shiftCounter").size() > ends; });
    const std::vector<std::string> requests = wire.requests();
    return std::vector<std::string>(requests.begin() + static_cast<std::ptrdiff_t>(before), requests.end() - 1);
  }

  // The same for so many requests; what is queued behind them stays, as a rule.
  void sendSome(size_t count) {
    const size_t before = wire.requests().size();
    runUntil([&] { return wire.requests().size() >= before + count; });
  }

  // Asks for events once, and hands the answer out. The tick clock is past the interval of these requests.
  void askForEvents(const std::string& reply) {
    wire.answer("game.popEvents", reply);
    TogglePopRequests(false);
    TogglePopRequests(true);
    Poll(0);
    sendSome(1);
    Poll(0);
  }

  // Whether requests for events are switched on. The tick clock is at 5000 or later and none has been answered.
  bool asksForEvents() const { return IsTimedOut(); }

  // Polls until the condition holds; false when it does not within the bound.
  bool pollUntil(const std::function<bool()>& condition) {
    return waitFor([&] {
      Poll(0);
      return condition();
    });
  }

  // The milliseconds that calls of the method take on average, rounded: one more in the queue adds them to its
  // wait.
  unsigned int averageOf(MethodType method) {
    const unsigned int before = calculateApproximateWaitTime(-1);
    SendRequest(method, std::numeric_limits<int>::min(), KSLCallback(), "");
    return calculateApproximateWaitTime(-1) - before;
  }

  // Starts the thread, waits for the registration and forgets what the listener heard of it.
  bool startRegistered() {
    if (Start(true, 0) != 0) return false;
    listener.inits.clear();
    return true;
  }

  FakeTransport& wire;
  NotingListener listener;

 private:
  // Ends the process when the thread does not get so far, for then it may be held up where it cannot be stopped.
  void runUntil(const std::function<bool()>& condition) {
    SetRegisterRequired(false);
    Start(false, 0);
    if (!waitFor(condition)) {
      std::printf("the calls in the queue were not sent\n");
      std::abort();
    }
    Stop();
  }

  mutable std::mutex pausesMutex;
  std::vector<Uint32> pauses;
};

}  // namespace linktest
