#include "tools/kslsim/RpcServer.h"

#include <httplib.h>

#include "common/GuardedTransport.h"

namespace kslsim {
namespace {

const char* const XML_TYPE = "text/xml; charset=utf-8";
constexpr int kLookMilliseconds = 50;  // how soon a call that is held notices that it need not be any more

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
  if (bad && !bad->alters()) return answerBadly(*bad, request, response);
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
  const Connection connection(port(), request.remote_port);
  const Way way = bad.row->way;
  if (way == Way::Late || way == Way::Drip) noteBadly(bad, method);
  if (way == Way::Late) linger(bad.number("ms"), connection);
  std::string out = answerOf(request);
  if (way == Way::Drip) return drip(bad.number("ms"), httpAnswer(out), connection);
  if (!bad.field().empty()) {
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
  Json entry{{"method", method}, {"bad", bad.row->name}};
  if (!bad.field().empty()) entry["field"] = bad.field();
  mSimulator.log().add(mSimulator.now(), std::move(entry));
}

void RpcServer::answerBadly(const BadReply& bad, const httplib::Request& request, httplib::Response& response) {
  noteBadly(bad, methodNameIn(request.body));
  const Connection connection(port(), request.remote_port);
  const BadRow& row = *bad.row;
  const std::string body = bad.body();
  switch (row.way) {
    case Way::Shut:
      return connection.shut();
    case Way::Hold:
      return keepSilent(bad.number("ms"), connection);
    case Way::Http:
      if (const int status = takes(row, "status") ? bad.number("status") : row.status) response.status = status;
      if (row.body) response.set_content(body, row.type ? row.type : XML_TYPE);
      return;
    case Way::Cut: {
      const int bytes = bad.number("bytes");
      const std::string whole = httpAnswer(body);
      connection.send(whole.substr(0, bytes < 0 ? whole.size() - body.size() / 2 : static_cast<size_t>(bytes)));
      return connection.shut();
    }
    case Way::Raw:
      connection.send(body);
      return connection.shut();
    case Way::Late:
    case Way::Drip:
      return;  // these alter
  }
}

void RpcServer::linger(int64_t milliseconds, const Connection& connection) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (!connection.peerGone()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
    if (left <= 0 || !pause(static_cast<int>(std::min<int64_t>(left, kLookMilliseconds)))) return;
  }
}

void RpcServer::keepSilent(int milliseconds, const Connection& connection) {
  const uint64_t orders = mSimulator.goodOrders();
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (pause(kLookMilliseconds) && !connection.peerGone() && mSimulator.goodOrders() == orders &&
         (milliseconds == 0 || std::chrono::steady_clock::now() < end)) {
  }
  connection.shut();
}

void RpcServer::drip(int milliseconds, const std::string& bytes, const Connection& connection) {
  const uint64_t orders = mSimulator.goodOrders();
  for (char byte : bytes) {
    if (mSimulator.goodOrders() != orders || !connection.send(std::string(1, byte))) break;
    for (int waited = 0; waited < milliseconds && mSimulator.goodOrders() == orders; waited += kLookMilliseconds)
      if (!pause(std::min(kLookMilliseconds, milliseconds - waited))) return connection.shut();
  }
  connection.shut();
}

}  // namespace kslsim
