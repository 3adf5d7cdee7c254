// The figures that a collector takes: what the file of METRICS_FILE says of the running program.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

class Figures : public SystemTest {
 protected:
  void start(std::map<std::string, std::string> environment) {
    startSimulator();
    environment["METRICS_FILE"] = file();
    startProgram(mSimulator.address(), Renderer::Software, environment);
  }
  std::string file() const { return mFolder + "/top.prom"; }
  // Of today and, should midnight come, of tomorrow.
  std::vector<std::string> logs() const {
    std::vector<std::string> files;
    for (const int days : {0, 1}) {
      const std::time_t time = std::time(nullptr) + days * 86400;
      char date[16];
      std::strftime(date, sizeof date, "%F", std::localtime(&time));
      files.push_back(mFolder + "/top_" + date + ".log");
    }
    return files;
  }
  // The figure behind the name of the program; -1 where there is none.
  double figure(const std::string& name) const {
    const std::string text = contentOf(file()), line = "\ntopscreen_" + name + " ";
    const size_t at = text.find(line);
    return at == std::string::npos ? -1 : std::atof(text.c_str() + at + line.size());
  }
  // It is written every ten seconds.
  bool comesTo(const std::string& name, const std::function<bool(double)>& condition) {
    return within(40000, [&] { return condition(figure(name)); });
  }
  bool isCounted(const std::string& name) {
    return comesTo(name, [](double value) { return value > 0; });
  }
};

TEST_F(Figures, AreThoseOfTheRunningProgram) {
  start({});
  const auto isShown = [this](double seconds) { return seconds > 5 && figure("panel{panel=\"jackpots\"}") == 1; };
  ASSERT_TRUE(comesTo("uptime_seconds", isShown)) << contentOf(file());
  EXPECT_EQ(figure("panel{panel=\"loader\"}"), 0);
  EXPECT_EQ(figure("registered"), 1);
  EXPECT_EQ(figure("polls_total{kind=\"init\"}"), 1);
  EXPECT_EQ(figure("polls_total{kind=\"state\"}"), 1);
  EXPECT_GT(figure("polls_total{kind=\"events\"}"), 0);
  EXPECT_GT(figure("frames_total"), 0);
  EXPECT_GT(figure("longest_frame_seconds"), 0);
  EXPECT_GT(figure("main_passes_total"), 0);
  EXPECT_GT(figure("log_lines_total"), 0);
  for (const char* reason : {"console", "file", "limit"})
    EXPECT_EQ(figure(std::string("log_lines_lost_total{reason=\"") + reason + "\"}"), 0) << reason;
  EXPECT_EQ(figure("missing_files"), 2) << "the pictures of buttons, which this skin has not\n" << log();
  EXPECT_GE(figure("last_good_answer_age_seconds"), 0);
  EXPECT_LT(figure("last_good_answer_age_seconds"), bound(30));
  EXPECT_GT(figure("textures"), 2);
  EXPECT_GT(figure("texture_bytes"), 2 * 1920 * 1080 * 4) << "the picture and the ground at least";
  const double textures = figure("textures"), bytes = figure("texture_bytes");
  for (int i = 0; i < 3; ++i) mSimulator.apply({{"do", "add"}, {"level", {{"CurrentPot", 5}}}});
  EXPECT_TRUE(comesTo("textures", [&](double value) { return value > textures; })) << textures;
  EXPECT_GT(figure("texture_bytes"), bytes);
}

TEST_F(Figures, LinesThatADiskDoesNotTakeAreCounted) {
  for (const std::string& log : logs()) std::filesystem::create_symlink("/dev/full", log);
  start({});
  EXPECT_TRUE(isCounted("log_lines_lost_total{reason=\"file\"}"));
  EXPECT_EQ(figure("log_lines_lost_total{reason=\"limit\"}"), 0);
}

TEST_F(Figures, LinesBeyondTheLimitOfTheDayAreCounted) {
  for (const std::string& log : logs()) std::ofstream(log) << std::string(1 << 20, '\n');
  start({{"LOG_MAX_MB", "1"}});
  EXPECT_TRUE(isCounted("log_lines_lost_total{reason=\"limit\"}"));
  EXPECT_EQ(figure("log_lines_lost_total{reason=\"file\"}"), 0);
}

TEST_F(Figures, LinesThatTheConsoleDoesNotTakeAreCounted) {
  const std::string console = mFolder + "/console";
  ASSERT_EQ(mkfifo(console.c_str(), 0600), 0);
  const int pipe = open(console.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  while (write(pipe, ".", 1) > 0) {
  }
  startSimulator();
  startProgram(mProgram, console, mSimulator.address(), Renderer::Software, {{"METRICS_FILE", file()}});
  EXPECT_TRUE(isCounted("log_lines_lost_total{reason=\"console\"}"));
  EXPECT_EQ(figure("log_lines_lost_total{reason=\"file\"}"), 0);
  close(pipe);
}

}  // namespace
}  // namespace systest
