#include "tests/system/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace systest {
namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> out;
  for (std::string& text : texts) out.push_back(text.data());
  out.push_back(nullptr);
  return out;
}

}  // namespace

bool Process::start(const Setup& setup) {
  std::vector<std::string> arguments{setup.program}, environment;
  arguments.insert(arguments.end(), setup.arguments.begin(), setup.arguments.end());
  for (const auto& [name, value] : setup.environment) environment.push_back(name + "=" + value);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  if (setup.output.empty()) {
    posix_spawn_file_actions_addclose(&actions, 1);
    posix_spawn_file_actions_addclose(&actions, 2);
  } else {
    posix_spawn_file_actions_addopen(&actions, 1, setup.output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
  }
  if (setup.descriptor >= 0) posix_spawn_file_actions_adddup2(&actions, setup.descriptor, 3);
  posix_spawn_file_actions_addclosefrom_np(&actions, setup.descriptor >= 0 ? 4 : 3);
  if (!setup.folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, setup.folder.c_str());

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t all, none;
  sigfillset(&all);
  sigemptyset(&none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);

  const int result = posix_spawnp(&mPid, setup.program.c_str(), &actions, &attributes, pointersTo(arguments).data(),
                                  pointersTo(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  mStatus.reset();
  if (result != 0) mPid = -1;
  return result == 0;
}

bool Process::running() { return started() && !wait(0); }

void Process::signal(int number) {
  if (running()) ::kill(mPid, number);
}

std::optional<int> Process::wait(int milliseconds) {
  if (!started() || mStatus) return mStatus;
  for (int waited = 0;; ++waited) {
    int status = 0;
    if (waitpid(mPid, &status, WNOHANG) == mPid) return mStatus = status;
    if (waited >= milliseconds) return std::nullopt;
    usleep(1000);
  }
}

void Process::kill() {
  if (!started()) return;
  ::kill(-mPid, SIGKILL);
  wait(300000);  // its memory may be given back by a thread that runs only when nobody else does
  mPid = -1;
}

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

std::string contentOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::stringstream text;
  text << stream.rdbuf();
  return text.str();
}

}  // namespace systest
