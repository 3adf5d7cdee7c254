#include "tests/support/ChildProcess.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace {
constexpr std::chrono::minutes kLongest{2};
}  // namespace

ChildProcess::ChildProcess(const std::function<void()>& body) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  std::fflush(nullptr);
  mPid = fork();
  if (mPid < 0) throw std::runtime_error("no process");
  if (mPid > 0) {
    close(ends[1]);
    mPipe = ends[0];
    return;
  }
  dup2(ends[1], STDOUT_FILENO);
  dup2(ends[1], STDERR_FILENO);
  close(ends[0]);
  close(ends[1]);
  body();
  std::fflush(nullptr);
  _exit(99);
}

ChildProcess::~ChildProcess() {
  if (mEnd.empty()) {
    ::kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
  }
  close(mPipe);
}

// The end of the output is the end of the process, and of what it has started.
const std::string& ChildProcess::end() {
  if (!mEnd.empty()) return mEnd;
  const auto last = std::chrono::steady_clock::now() + kLongest;
  bool hung = false;
  for (ssize_t count = 1; count > 0;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(last - std::chrono::steady_clock::now()).count();
    pollfd waiting{mPipe, POLLIN, 0};
    if (left <= 0 || poll(&waiting, 1, static_cast<int>(left)) <= 0) {
      hung = true;
      ::kill(mPid, SIGKILL);
      break;
    }
    char piece[4096];
    count = read(mPipe, piece, sizeof piece);
    if (count > 0) mOutput.append(piece, static_cast<size_t>(count));
  }
  int status = 0;
  waitpid(mPid, &status, 0);
  if (hung)
    mEnd = "hung";
  else if (WIFSIGNALED(status))
    mEnd = "signal " + std::to_string(WTERMSIG(status));
  else
    mEnd = "exit " + std::to_string(WEXITSTATUS(status));
  return mEnd;
}

const std::string& ChildProcess::output() {
  end();
  return mOutput;
}

int occurrences(const std::string& text, const std::string& of) {
  int count = 0;
  for (size_t at = of.find(text); at != std::string::npos; at = of.find(text, at + 1)) ++count;
  return count;
}

testing::AssertionResult tellsInOrder(const std::string& output, const std::vector<std::string>& texts) {
  size_t at = 0;
  for (const auto& text : texts) {
    const size_t found = output.find(text, at);
    if (found == std::string::npos) return testing::AssertionFailure() << "no \"" << text << "\" in:\n" << output;
    at = found + text.size();
  }
  return testing::AssertionSuccess();
}
