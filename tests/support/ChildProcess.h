#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// A function of the test in a process of its own, made by a fork: several run at the same time, and none can hang
// the test. What other threads the test's process has, the child has not: beside an
// application that is its "EndLimit", so a body beside one must not begin threads, which ThreadSanitizer refuses.
class ChildProcess {
 public:
  // A body that comes to its end ends the process with exit code 99.
  explicit ChildProcess(const std::function<void()>& body);
  // Kills what still runs.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // How the process has ended: "exit 15", "signal 11", or "hung" when it had to be killed after two minutes.
  const std::string& end();
  // All that it has written to both outputs until it ended.
  const std::string& output();

 private:
  pid_t mPid = -1;
  int mPipe = -1;
  std::string mEnd, mOutput;
};

// How often the text stands in the other one.
int occurrences(const std::string& text, const std::string& of);

// Whether the texts stand in it one after the other, whatever is between them.
testing::AssertionResult tellsInOrder(const std::string& output, const std::vector<std::string>& texts);

// Makes the children of all rows, so that they run at the same time; then checks each with its row, under whose
// `name` what fails is shown.
template <typename Rows, typename Make, typename Check>
void endAll(const Rows& rows, const Make& make, const Check& check) {
  std::vector<std::unique_ptr<ChildProcess>> children;
  for (const auto& row : rows) children.push_back(make(row));
  auto child = children.begin();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    check(row, **child++);
  }
}
