#include "vesperatopscreen/CommandLine.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "vesperatopscreen/AppMain.h"

namespace {

struct Answer {
  std::optional<int> code;
  std::string out, err;
};

std::string contentOf(std::FILE* file) {
  std::string text(static_cast<size_t>(std::ftell(file)), ' ');
  std::rewind(file);
  EXPECT_EQ(std::fread(text.data(), 1, text.size(), file), text.size());
  return text;
}

std::vector<char*> commandLine(std::vector<std::string>& arguments) {
  std::vector<char*> out;
  for (std::string& argument : arguments) out.push_back(argument.data());
  out.push_back(nullptr);
  return out;
}

Answer serve(std::vector<std::string> arguments) {
  std::FILE* const out = std::tmpfile();
  std::FILE* const err = std::tmpfile();
  std::vector<char*> argv = commandLine(arguments);
  Answer answer{ServeOptions(static_cast<int>(arguments.size()), argv.data(), out, err), "", ""};
  answer.out = contentOf(out);
  answer.err = contentOf(err);
  std::fclose(out);
  std::fclose(err);
  return answer;
}

const char* const usage = "usage: topscreen [HOST:PORT]\n       topscreen --help | --version\n";

TEST(CommandLine, WithoutAnOptionStartsTheProgram) {
  for (const auto& arguments : std::vector<std::vector<std::string>>{{},
                                                                     {"topscreen"},
                                                                     {"-topscreen"},
                                                                     {"topscreen", "127.0.0.1:9100"},
                                                                     {"topscreen", ""},
                                                                     {"topscreen", "host-a:1", "b"}}) {
    const Answer answer = serve(arguments);
    EXPECT_EQ(answer.code, std::nullopt);
    EXPECT_EQ(answer.out + answer.err, "");
  }
}

TEST(CommandLine, VersionIsThatOfTheProject) {
  const Answer answer = serve({"topscreen", "--version"});
  EXPECT_EQ(answer.code, 0);
  EXPECT_EQ(answer.out, "topscreen " TOPSCREEN_VERSION "\n");
  EXPECT_EQ(answer.err, "");
}

TEST(CommandLine, HelpNamesEveryVariableThatIsNeeded) {
  const Answer answer = serve({"topscreen", "--help"});
  EXPECT_EQ(answer.code, 0);
  EXPECT_TRUE(answer.out.starts_with(usage)) << answer.out;
  for (const char* name : {"HOME_DIR", "WORKING_DIR", "LOG_FILENAME", "DISABLE_REBOOT_ON_EXIT"})
    EXPECT_NE(answer.out.find(name), std::string::npos) << name;
  EXPECT_EQ(answer.err, "");
}

TEST(CommandLine, AnyOtherOptionIsRefusedWithTheUsage) {
  for (const auto& arguments : std::vector<std::vector<std::string>>{{"topscreen", "-"},
                                                                     {"topscreen", "-h"},
                                                                     {"topscreen", "--versio"},
                                                                     {"topscreen", "--version=1"},
                                                                     {"topscreen", "--"},
                                                                     {"topscreen", "--help", "--version"},
                                                                     {"topscreen", "--help", "127.0.0.1:9100"},
                                                                     {"topscreen", "--version", "--help"},
                                                                     {"topscreen", "127.0.0.1:9100", "-v"}}) {
    const Answer answer = serve(arguments);
    EXPECT_EQ(answer.code, 2) << arguments.back();
    EXPECT_EQ(answer.out, "") << arguments.back();
    EXPECT_EQ(answer.err, usage) << arguments.back();
  }
}

// A started program would take the signals, open a window and look for its service.
TEST(CommandLine, OptionStartsNothing) {
  std::vector<std::string> arguments{"topscreen", "--version"};
  std::vector<char*> argv = commandLine(arguments);
  testing::internal::CaptureStdout();
  EXPECT_EQ(AppMain(2, argv.data()), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "topscreen " TOPSCREEN_VERSION "\n");
}

}  // namespace
