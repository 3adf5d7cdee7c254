#include "tools/kslsim/ControlServer.h"

#include <httplib.h>
#include <charconv>

#include "tools/kslsim/Console.h"

namespace kslsim {
namespace {

void give(httplib::Response& response, const Json& json) {
  response.set_content(json.dump(-1, ' ', false, Json::error_handler_t::replace), "application/json");
}

void refuse(httplib::Response& response, int status, const std::string& why) {
  response.status = status;
  give(response, {{"error", why}});
}

// A number that a parameter of the address gives; `otherwise` where it is not given, nothing when it is no number.
std::optional<uint64_t> numberOf(const httplib::Request& request, const char* name, uint64_t otherwise) {
  const std::string text = request.get_param_value(name);
  if (text.empty()) return otherwise;
  uint64_t out = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), out);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return out;
}

// A foreign page in the same browser must not steer the simulator, under whatever name it finds this address.
bool comesFromHere(const httplib::Request& request) {
  const std::string host = request.get_header_value("Host");
  const std::string name = host.substr(0, host.rfind(':'));
  if (name != "127.0.0.1" && name != "localhost") return false;
  const std::string origin = request.get_header_value("Origin");
  return origin.empty() || origin == "http://" + host;
}

const char* const FOREIGN = "only for pages of this address";

const char* typeOf(const std::string& path) {
  if (path.ends_with(".css")) return "text/css; charset=utf-8";
  if (path.ends_with(".js")) return "text/javascript; charset=utf-8";
  return "text/html; charset=utf-8";
}

}  // namespace

void ControlServer::addRoutes(httplib::Server& server) {
  server.set_pre_routing_handler([](const httplib::Request& request, httplib::Response& response) {
    // A body that is left unread here would be taken for the next request: those that have one are refused later.
    if (request.method == "POST" || comesFromHere(request)) return httplib::Server::HandlerResponse::Unhandled;
    refuse(response, 403, FOREIGN);
    return httplib::Server::HandlerResponse::Handled;
  });
  server.set_error_handler([](const httplib::Request&, httplib::Response& response) {
    if (!response.body.empty()) return;
    refuse(response, response.status,
           response.status == 404   ? "there is nothing at this address"
           : response.status == 413 ? "a step has at most 512 KiB"
                                    : "this is no request that can be answered");
  });
  addConsole(server);
  addSteering(server);
}

void ControlServer::addConsole(httplib::Server& server) {
  for (size_t i = 0; i < CONSOLE_FILE_COUNT; ++i) {
    const ConsoleFile& file = CONSOLE_FILES[i];
    const auto serve = [&file](const httplib::Request&, httplib::Response& response) {
      response.set_content(file.text, typeOf(file.path));
    };
    server.Get(file.path, serve);
    if (std::string(file.path) == "/index.html") server.Get("/", serve);
  }
  server.Get("/api/forms", [](const auto&, auto& response) { give(response, consoleForms()); });
  server.Get("/api/known", [this](const auto& request, auto& response) {
    const auto client = numberOf(request, "client", 0);
    if (!client || *client > INT32_MAX) return refuse(response, 400, "\"client\" is the identifier of one");
    give(response, mSimulator.knownTo(static_cast<int>(*client)));
  });
  server.Get("/api/screen.png", [this](const auto&, auto& response) {
    std::string png, error;
    if (!mScreen.take(png, error)) return refuse(response, 404, error);
    response.set_header("Cache-Control", "no-store");
    response.set_content(png, "image/png");
  });
}

void ControlServer::addSteering(httplib::Server& server) {
  server.Get("/api/state", [this](const auto&, auto& response) { give(response, mSimulator.report()); });
  server.Get("/api/log", [this](const auto& request, auto& response) {
    const auto since = numberOf(request, "since", 0);
    if (!since) return refuse(response, 400, "\"since\" is the \"n\" of an entry");
    give(response, mSimulator.log().since(*since));
  });
  server.Post("/api/do", [this](const auto& request, auto& response) {
    if (!comesFromHere(request)) return refuse(response, 403, FOREIGN);
    try {
      const PlacedJson json = PlacedJson::parse(request.body);
      try {
        mSimulator.apply(json.value);
        give(response, {{"ok", true}});
      } catch (const InputError& error) {
        throw ScenarioError(json.placeOf(error.path()), error.what());
      }
    } catch (const ScenarioError& error) {
      refuse(response, 400, error.what());
    }
  });
}

}  // namespace kslsim
