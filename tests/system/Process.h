#pragma once

#include <sys/types.h>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace systest {

// A child process in a group of its own, killed with everything that it has started when this object goes.
// Used by one thread.
class Process {
 public:
  struct Setup {
    std::string program;  // found by PATH when it holds no slash
    std::vector<std::string> arguments;
    std::map<std::string, std::string> environment;  // all of it: nothing is inherited
    std::string folder;                              // working directory; the test's own when empty
    std::string output;                              // file that gets both outputs; closed when empty
    int descriptor = -1;                             // handed to the child as descriptor 3
  };

  Process() = default;
  ~Process() { kill(); }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // Starts the child with all signals at their defaults, whatever the test runner ignores. False when it cannot.
  bool start(const Setup& setup);

  bool started() const { return mPid > 0; }
  pid_t pid() const { return mPid; }
  bool running();

  // Sends the signal to the child alone.
  void signal(int number);

  // The status as waitpid gives it, once the child has ended; nothing when it has not within that time.
  std::optional<int> wait(int milliseconds);

  // Kills the whole group and waits for the child.
  void kill();

 private:
  pid_t mPid = -1;
  std::optional<int> mStatus;
};

// The value of a variable of this process; empty when it is not set.
std::string variable(const char* name);

// The whole file; empty when it cannot be read.
std::string contentOf(const std::string& file);

}  // namespace systest
