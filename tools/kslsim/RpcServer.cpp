#include "tools/kslsim/RpcServer.h"

#include <httplib.h>

#include "common/GuardedTransport.h"

namespace kslsim {
namespace {

const char* const XML_TYPE = "text/xml; charset=utf-8";
constexpr int LOOK_MILLISECONDS = 50;  // how soon a call that is held notices that it need not be any more

// An answer as it stands on the wire.
std::string httpAnswer(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: " + std::string(XML_TYPE) +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace

RpcServer::RpcServer(Simulator& simulator, const std::string& path, Replay* replay)
  : mSimulator(simulator), mPath(path), mReplay(replay) {
  addMethods(mRegistry, mSimulator);
}

void RpcServer::addRoutes(httplib::Server& server) {
  server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response&) {
    if (mSimulator.wantsToListen()) return httplib::Server::HandlerResponse::Unhandled;
    Connection(port(), request.remote_port).shut();
    return httplib::Server::HandlerResponse::Handled;
  });
  server.Post(routeOf(mPath),
              [this](const httplib::Request& request, httplib::Response& response) { answer(request, response); });
}

void RpcServer::answer(const httplib::Request& request, httplib::Response& response) {
  const std::string method = methodNameIn(request.body);
  const auto bad = mSimulator.takeBadReply(method);
  if (bad && !alters(*bad)) return answerBadly(*bad, request, response);
  if (std::string text; findUnreadableI8(request.body, text)) {
    mSimulator.log().add(mSimulator.now(),
                         {{"method", method}, {"refused", "unreadable <i8>: " + text.substr(0, 64)}});
    response.status = 400;
    return;
  }
  if (bad) return answerAltered(*bad, method, request, response);
  if (!mReplay) return response.set_content(answerOf(request), XML_TYPE);
  const WireAnswer answer = replayed(request);
  if (!answer.error.empty()) return Connection(port(), request.remote_port).shut();
  response.status = answer.status;
  response.set_content(answer.body, XML_TYPE);
}

WireAnswer RpcServer::replayed(const httplib::Request& request) {
  std::string method;
  Json params;
  readCall(request.body, method, params);
  const WireAnswer answer = mReplay->answer(method, params, mSimulator.now());
  Json entry{{"method", method}, {"params", params}, {"replayed", true}};
  if (!answer.error.empty()) entry["refused"] = answer.error;
  if (const auto value = valueOf(answer)) entry["answer"] = *value;
  mSimulator.log().add(mSimulator.now(), std::move(entry));
  if (answer.took > 0) linger(answer.took, Connection(port(), request.remote_port));
  return answer;
}

std::string RpcServer::answerOf(const httplib::Request& request) {
  if (mReplay) return replayed(request).body;
  std::string out;
  mRegistry.processCall(request.body, &out);
  return out;
}

void RpcServer::answerAltered(const BadReply& bad, const std::string& method, const httplib::Request& request,
                              httplib::Response& response) {
  if (bad.bad == Bad::Slow || bad.bad == Bad::Drip) noteBadly(bad, method);
  if (bad.bad == Bad::Slow) linger(bad.ms, Connection(port(), request.remote_port));
  std::string out = answerOf(request);
  if (bad.bad == Bad::Drip) return drip(bad.ms, httpAnswer(out), Connection(port(), request.remote_port));
  if (bad.bad != Bad::Slow) {
    if (auto changed = spoilt(out, bad)) {
      noteBadly(bad, method);
      out = std::move(*changed);
    } else {
      mSimulator.giveBackBadReply(method, bad);
    }
  }
  response.set_content(out, XML_TYPE);
}

void RpcServer::noteBadly(const BadReply& bad, const std::string& method) {
  Json entry{{"method", method}, {"bad", bad.name}};
  if (!bad.field.empty()) entry["field"] = bad.field;
  mSimulator.log().add(mSimulator.now(), std::move(entry));
}

void RpcServer::answerBadly(const BadReply& bad, const httplib::Request& request, httplib::Response& response) {
  noteBadly(bad, methodNameIn(request.body));
  const Connection connection(port(), request.remote_port);
  const std::string body = badBody(bad);
  switch (bad.bad) {
    case Bad::Refuse:
      return connection.shut();
    case Bad::Silent:
      return keepSilent(bad.ms, connection);
    case Bad::Http500:
      response.status = 500;
      return;
    case Bad::Html:
      return response.set_content(body, "text/html");
    case Bad::Cut: {
      const std::string whole = httpAnswer(body);
      const size_t half = whole.size() - body.size() / 2;
      connection.send(whole.substr(0, bad.bytes < 0 ? half : static_cast<size_t>(bad.bytes)));
      return connection.shut();
    }
    case Bad::Raw:
      connection.send(bad.text);
      return connection.shut();
    case Bad::Body:
      response.status = bad.status;
      return response.set_content(body, XML_TYPE);
    default:
      return response.set_content(body, XML_TYPE);
  }
}

void RpcServer::linger(int64_t milliseconds, const Connection& connection) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (!connection.peerGone()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
    if (left <= 0 || !pause(static_cast<int>(std::min<int64_t>(left, LOOK_MILLISECONDS)))) return;
  }
}

void RpcServer::keepSilent(int milliseconds, const Connection& connection) {
  const uint64_t orders = mSimulator.goodOrders();
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (pause(LOOK_MILLISECONDS) && !connection.peerGone() && mSimulator.goodOrders() == orders &&
         (milliseconds == 0 || std::chrono::steady_clock::now() < end)) {
  }
  connection.shut();
}

void RpcServer::drip(int milliseconds, const std::string& bytes, const Connection& connection) {
  const uint64_t orders = mSimulator.goodOrders();
  for (char byte : bytes) {
    if (mSimulator.goodOrders() != orders || !connection.send(std::string(1, byte))) break;
    for (int waited = 0; waited < milliseconds && mSimulator.goodOrders() == orders; waited += LOOK_MILLISECONDS)
      if (!pause(std::min(LOOK_MILLISECONDS, milliseconds - waited))) return connection.shut();
  }
  connection.shut();
}

}  // namespace kslsim
