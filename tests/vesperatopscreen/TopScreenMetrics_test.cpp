#include "vesperatopscreen/TopScreenMetrics.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "tests/support/TestApplication.h"
#include "vendelo-sdl2/TAsyncJobs.h"

namespace {

TopScreenFacts someFacts() {
  TopScreenFacts facts;
  facts.panel = "paytable";
  facts.id = 7;
  facts.sinceGoodAnswer = 1250;
  facts.frames = 600000000;
  facts.lateFrames = 3;
  facts.logLines = 44;
  facts.linesLostByConsole = 5;
  facts.linesLostByFile = 6;
  facts.linesBeyondLimit = 9;
  facts.textures = 123;
  facts.textureBytes = 5000000000;
  facts.missingFiles = 2;
  facts.link.count(M_INIT, E_INIT_REJECTED);
  facts.link.count(M_INIT, E_NO_ERROR);
  for (int i = 0; i < 5; ++i) facts.link.count(M_POPEVENTS, E_NO_ERROR);
  facts.link.count(M_POPEVENTS, E_COMMUNICATION_ERROR);
  facts.link.count(M_POPEVENTS, static_cast<ErrorTypes>(77));
  facts.link.count(M_POPEVENTS, static_cast<ErrorTypes>(-77));
  facts.link.count(M_PLATFORM_STATUS, E_NO_ERROR);
  facts.link.count(M_VOLUME, E_INTERNAL_ERROR);
  facts.link.eventsHandled = 12;
  facts.link.eventsRefused = 1;
  return facts;
}

// The lines that are no comments, behind the name of the program.
std::string samples(const std::string& text) {
  std::istringstream in(text);
  std::string out;
  for (std::string line; std::getline(in, line);)
    if (line.starts_with("topscreen_")) out += line.substr(10) + "\n";
  return out;
}

// What the collector's own tool says of a text, and its exit code.
std::string checked(const std::string& text) {
  const std::string file = testing::TempDir() + "metrics-" + std::to_string(getpid());
  std::ofstream(file) << text;
  std::FILE* pipe = popen(("promtool check metrics <" + file + " 2>&1").c_str(), "r");
  std::string said;
  char part[256];
  while (std::fgets(part, sizeof part, pipe)) said += part;
  const int status = pclose(pipe);
  std::filesystem::remove(file);
  return said + std::to_string(WEXITSTATUS(status));
}

TEST(TopScreenMetrics, EveryFactIsAFigure) {
  const std::string text = samples(metricsText(someFacts(), 1234567, 4320000500, 41));
  EXPECT_EQ(text.substr(text.find('\n') + 1),
            "uptime_seconds 4320000.5\n"
            "frames_total 600000000\n"
            "late_frames_total 3\n"
            "longest_frame_seconds 0.041\n"
            "main_passes_total 1234567\n"
            "panel{panel=\"loader\"} 0\n"
            "panel{panel=\"jackpots\"} 0\n"
            "panel{panel=\"paytable\"} 1\n"
            "panel{panel=\"instructions\"} 0\n"
            "panel{panel=\"stopped\"} 0\n"
            "registered 1\n"
            "polls_total{kind=\"init\"} 2\n"
            "polls_total{kind=\"events\"} 8\n"
            "polls_total{kind=\"state\"} 1\n"
            "failed_polls_total{kind=\"events\",error=\"communication_error\"} 1\n"
            "failed_polls_total{kind=\"events\",error=\"other\"} 2\n"
            "failed_polls_total{kind=\"init\",error=\"init_rejected\"} 1\n"
            "last_good_answer_age_seconds 1.25\n"
            "events_total{result=\"handled\"} 12\n"
            "events_total{result=\"refused\"} 1\n"
            "textures 123\n"
            "texture_bytes 5000000000\n"
            "missing_files 2\n"
            "log_lines_total 44\n"
            "log_lines_lost_total{reason=\"console\"} 5\n"
            "log_lines_lost_total{reason=\"file\"} 6\n"
            "log_lines_lost_total{reason=\"limit\"} 9\n");
  EXPECT_TRUE(text.starts_with("build_info{version=\"")) << text;
}

TEST(TopScreenMetrics, CollectorsToolFindsNoFault) {
  EXPECT_EQ(checked(metricsText(someFacts(), 1234567, 4320000500, 41)), "0");
  EXPECT_EQ(checked(metricsText(TopScreenFacts(), 0, 0, 0)), "0");
  EXPECT_NE(checked("what it says of a fault 1 2 3\n"), "0");
}

TEST(TopScreenMetrics, BeforeTheFirstAnswerThereIsNoAgeAndNoRegistration) {
  const std::string text = samples(metricsText(TopScreenFacts(), 0, 0, 0));
  EXPECT_EQ(text.find("last_good_answer"), std::string::npos);
  EXPECT_NE(text.find("\nregistered 0\n"), std::string::npos);
  EXPECT_NE(text.find("\npanel{panel=\"loader\"} 1\n"), std::string::npos);
}

// The service's locale groups digits and has a decimal comma.
TEST(TopScreenMetrics, NumbersAreThoseOfNoLanguage) {
  struct Grouped : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    char do_decimal_point() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouped));
  const std::string text = metricsText(someFacts(), 1234567, 4320000500, 41);
  std::locale::global(before);
  EXPECT_NE(text.find("main_passes_total 1234567\n"), std::string::npos);
  EXPECT_NE(text.find("longest_frame_seconds 0.041\n"), std::string::npos);
}

class MetricsFile : public testing::Test {
 protected:
  MetricsFile() {
    char name[] = "/tmp/metricsXXXXXX";
    folder = mkdtemp(name);
  }
  ~MetricsFile() override { std::filesystem::remove_all(folder); }
  static void wait() { ASSERT_TRUE(vendelo_sdl2::TAsyncJob::WaitForNone(60000)); }
  static std::string contentOf(const std::string& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  std::string folder;
};

TEST_F(MetricsFile, IsWrittenWhereTheVariableSaysForAllToRead) {
  const std::string path = folder + "/top.prom";
  const ScopedEnvironment environment("METRICS_FILE", path.c_str());
  TMetricsFile file;
  ASSERT_TRUE(file.wanted());
  file.write("one\n");
  wait();
  EXPECT_EQ(contentOf(path), "one\n");
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0644));
  file.write("two\n");
  wait();
  EXPECT_EQ(contentOf(path), "two\n");
}

TEST_F(MetricsFile, IsNotWantedWithoutTheVariable) {
  for (const char* none : {static_cast<const char*>(nullptr), ""}) {
    const ScopedEnvironment environment("METRICS_FILE", none);
    TMetricsFile file;
    EXPECT_FALSE(file.wanted());
    file.write("one\n");
    wait();
  }
}

TEST_F(MetricsFile, FailureIsToldOnceUntilItIsOver) {
  const std::string path = folder + "/later/top.prom";
  const ScopedEnvironment environment("METRICS_FILE", path.c_str());
  TestApplication app;
  app.TLogManager::Init(folder + "/log.log", nullptr, nullptr, false);
  TMetricsFile file;
  const auto write = [&] {
    file.write("text\n");
    wait();
  };
  const std::string line =
    "5|METRICS_FILE could not be written: " + folder + "/later/top.prom.part: No such file or directory";
  write();
  write();
  EXPECT_EQ(app.log.count(line), 1);
  std::filesystem::create_directories(folder + "/later");
  write();
  EXPECT_EQ(contentOf(path), "text\n");
  std::filesystem::remove_all(folder + "/later");
  write();
  write();
  EXPECT_EQ(app.log.count(line), 2);
}

}  // namespace
