// The control port as a browser uses it, and pictures of a window.
#include <gtest/gtest.h>
#include <httplib.h>
#include <png.h>

#include <set>

#include "tools/kslsim/Console.h"
#include "tools/kslsim/Service.h"

namespace kslsim {
namespace {

class Console : public testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(service.start(error)) << error;
    control = std::make_unique<httplib::Client>("127.0.0.1", service.controlPort());
  }

  // No X server has this number.
  Service service{Service::Options{.port = 0, .controlPort = 0, .display = ":64999"}};
  std::unique_ptr<httplib::Client> control;
};

TEST_F(Console, ServesItsFiles) {
  for (const auto& [path, type, text] : {std::tuple{"/", "text/html", "<title>kslsim console</title>"},
                                         {"/index.html", "text/html", "console.js"},
                                         {"/console.css", "text/css", "grid"},
                                         {"/console.js", "text/javascript", "'use strict'"}}) {
    const auto answer = control->Get(path);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200) << path;
    EXPECT_EQ(answer->get_header_value("Content-Type").find(type), 0u) << path;
    EXPECT_NE(answer->body.find(text), std::string::npos) << path;
    // Nothing is loaded from anywhere else.
    EXPECT_EQ(answer->body.find("//www."), std::string::npos);
    EXPECT_EQ(answer->body.find("https:"), std::string::npos);
  }
  EXPECT_EQ(control->Get("/other")->status, 404);
}

TEST_F(Console, SamplesOfAllEventsCanBeSent) {
  const Json forms = Json::parse(control->Get("/api/forms")->body);
  ASSERT_EQ(forms["events"].size(), 13u);
  int id = 100;
  for (const Json& event : forms["events"]) {
    EXPECT_EQ(event["id"], id++);
    EXPECT_NO_THROW(service.simulator().apply({{"do", "event"}, {"id", event["id"]}, {"value", event["sample"]}}))
      << event;
    for (const Json& field : event["fields"])
      EXPECT_TRUE(findField(stateFields(), field.get<std::string>())) << field;
  }
  EXPECT_EQ(forms["methods"].size(), 12u);
  EXPECT_EQ(forms["errors"].size(), 13u);
  std::set<std::string> replies;
  for (const Json& reply : forms["replies"]) replies.insert(reply["name"].get<std::string>());
  std::set<std::string> known;
  for (const BadRow& row : badRows()) known.insert(row.name);
  EXPECT_EQ(replies, known);
  EXPECT_EQ(forms["replies"].size(), badRows().size());
  for (const Json& step : forms["levels"]) EXPECT_NO_THROW(service.simulator().apply(step)) << step;
}

TEST_F(Console, TellsWhatAClientKnows) {
  EXPECT_EQ(control->Get("/api/known?client=1")->body, "null");
  EXPECT_EQ(control->Get("/api/known?client=x")->status, 400);
  EXPECT_EQ(control->Get("/api/known?client=99999999999")->status, 400);
  service.simulator().init("TopScreen", "1.5.0");
  service.simulator().platformState();
  EXPECT_EQ(Json::parse(control->Get("/api/known?client=1")->body), service.simulator().report()["state"]);
}

struct Sender {
  const char* host;
  const char* origin;
  int status;
};

TEST_F(Console, OnlyPagesOfItsOwnAddressGetIn) {
  const std::string port = std::to_string(service.controlPort());
  for (const Sender& sender :
       {Sender{"127.0.0.1:", "", 200}, Sender{"localhost:", "", 200},
        Sender{"127.0.0.1:", "http://127.0.0.1:", 200}, Sender{"localhost:", "http://127.0.0.1:", 403},
        Sender{"127.0.0.1:", "http://elsewhere.example:", 403}, Sender{"elsewhere.example:", "", 403},
        Sender{"elsewhere.example:", "http://elsewhere.example:", 403}}) {
    httplib::Headers headers{{"Host", sender.host + port}};
    if (*sender.origin) headers.insert({"Origin", sender.origin + port});
    EXPECT_EQ(control->Post("/api/do", headers, R"({"do": "up"})", "application/json")->status, sender.status)
      << sender.host << " " << sender.origin;
    EXPECT_EQ(control->Get("/api/state", headers)->status, sender.status);
  }
}

TEST_F(Console, NoRequestHidesInTheBodyOfOneThatIsRefused) {
  const std::string here = "127.0.0.1:" + std::to_string(service.controlPort());
  const std::string step = R"({"do": "set", "state": {"DemoMode": true}})";
  const std::string hidden = "POST /api/do HTTP/1.1\r\nHost: " + here +
                             "\r\nContent-Length: " + std::to_string(step.size()) + "\r\n\r\n" + step;
  control->set_keep_alive(true);
  for (const char* path : {"/api/do", "/other"}) {
    const auto answer = control->Post(path, {{"Origin", "http://elsewhere.example"}}, hidden, "text/plain");
    ASSERT_TRUE(answer);
    EXPECT_GE(answer->status, 403);
    // By the time of the next answer on this connection the hidden one would have been done.
    const auto next = control->Get("/api/state");
    ASSERT_TRUE(next);
    EXPECT_EQ(next->status, 200);
    EXPECT_EQ(Json::parse(next->body)["state"]["DemoMode"], false) << path;
  }
}

TEST_F(Console, SaysWhyThereIsNoPicture) {
  const auto answer = control->Get("/api/screen.png");
  EXPECT_EQ(answer->status, 404);
  EXPECT_EQ(Json::parse(answer->body)["error"], "The X server :64999 does not answer.");
}

TEST(Png, HoldsThePixels) {
  std::vector<uint8_t> rgb;
  for (int i = 0; i < 5 * 3; ++i)
    rgb.insert(rgb.end(), {static_cast<uint8_t>(i * 10), 7, static_cast<uint8_t>(255 - i)});
  const std::string png = pngOf(rgb, 5, 3);
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_TRUE(png_image_begin_read_from_memory(&image, png.data(), png.size()));
  ASSERT_EQ(image.width, 5u);
  ASSERT_EQ(image.height, 3u);
  image.format = PNG_FORMAT_RGB;
  std::vector<uint8_t> read(rgb.size());
  ASSERT_TRUE(png_image_finish_read(&image, nullptr, read.data(), 0, nullptr));
  EXPECT_EQ(read, rgb);
}

}  // namespace
}  // namespace kslsim
