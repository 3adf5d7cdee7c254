// usage: bench_kslsim KSLSIM [CLIENTS [SECONDS [INTERVAL]]]
//
// What the simulator needs of the processor for one poll: starts KSLSIM with four levels that guests play on, lets
// so many clients (300) register, each on a connection of its own, and ask for events each so many milliseconds
// (300). Prints how many polls were answered and how late, and the simulator's own processor time for each, with
// the time that it needs without any client taken off.
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kPop = "game.popEvents";

// A process whose first line of output is a port.
class Simulator {
 public:
  explicit Simulator(const char* program) {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    mPid = fork();
    if (mPid == 0) {
      dup2(ends[1], STDOUT_FILENO);
      execl(program, program, "--port", "0", "--control-port", "0", "--levels", "4", static_cast<char*>(nullptr));
      _exit(127);
    }
    close(ends[1]);
    FILE* output = fdopen(ends[0], "r");
    if (std::fscanf(output, "%d", &mPort) != 1) mPort = 0;
    // The pipe stays open: the simulator has more to say.
  }
  ~Simulator() {
    kill(mPid, SIGTERM);
    waitpid(mPid, nullptr, 0);
  }

  int port() const { return mPort; }

  // Processor time so far, in seconds.
  double used() const {
    clockid_t clock;
    timespec time{};
    if (clock_getcpuclockid(mPid, &clock) != 0 || clock_gettime(clock, &time) != 0) return 0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  }

 private:
  pid_t mPid = 0;
  int mPort = 0;
};

struct Client {
  int socket = -1, id = 0;
  std::string got;
  bool waits = false;  // for an answer
  Clock::time_point due, asked;
};

void ask(Client& client, const std::string& method, const std::string& params) {
  const std::string body = "<?xml version=\"1.0\"?><methodCall><methodName>" + method + "</methodName><params>" +
                           params + "</params></methodCall>";
  const std::string text = "POST /KSL HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: text/xml\r\nContent-Length: " +
                           std::to_string(body.size()) + "\r\n\r\n" + body;
  if (send(client.socket, text.data(), text.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(text.size()))
    std::abort();
  client.waits = true;
  client.asked = Clock::now();
}

// Reads what there is. True when the answer is whole; it stands in `got` then. False for good with `waits` off when
// the connection is shut.
bool answered(Client& client) {
  char buffer[65536];
  const ssize_t count = recv(client.socket, buffer, sizeof(buffer), 0);
  if (count <= 0) {
    client.waits = false;
    return false;
  }
  client.got.append(buffer, static_cast<size_t>(count));
  const size_t end = client.got.find("\r\n\r\n");
  const size_t length = client.got.find("Content-Length: ");
  if (end == std::string::npos || length > end) return false;
  const size_t whole = end + 4 + static_cast<size_t>(std::atol(client.got.c_str() + length + 16));
  if (client.got.size() < whole) return false;
  client.waits = false;
  return true;
}

int connected(int port) {
  const int out = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(out, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) return -1;
  return out;
}

bool registered(Client& client, int port) {
  client.socket = connected(port);
  if (client.socket < 0) return false;
  ask(
    client, "topscreen.init",
    "<param><value><string>TopScreen</string></value></param><param><value><string>1.5.0</string></value></param>");
  while (!answered(client))
    if (!client.waits) return false;
  const size_t at = client.got.find("<name>ID</name>");
  const size_t value = client.got.find("<i4>", at);
  if (at == std::string::npos || value == std::string::npos) return false;
  client.id = std::atoi(client.got.c_str() + value + 4);
  return true;
}

struct Result {
  long polls = 0, events = 0, lost = 0;
  std::vector<double> waits;  // milliseconds
};

Result pollFor(std::vector<Client>& clients, double seconds, std::chrono::milliseconds interval) {
  Result out;
  const auto begin = Clock::now(),
             end = begin + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  std::vector<pollfd> watched(clients.size());
  for (size_t i = 0; i < clients.size(); ++i) {
    watched[i] = {clients[i].socket, POLLIN, 0};
    clients[i].due = begin + interval * i / clients.size();
  }
  while (Clock::now() < end) {
    const auto now = Clock::now();
    for (Client& client : clients)
      if (client.socket >= 0 && !client.waits && client.due <= now) {
        client.got.clear();
        ask(client, kPop, "<param><value><int>" + std::to_string(client.id) + "</int></value></param>");
        client.due += interval;
      }
    poll(watched.data(), watched.size(), 1);
    for (size_t i = 0; i < clients.size(); ++i) {
      if (!watched[i].revents) continue;
      Client& client = clients[i];
      if (!answered(client)) {
        if (client.waits) continue;
        ++out.lost;
        close(client.socket);
        watched[i].fd = client.socket = -1;
        continue;
      }
      ++out.polls;
      out.events += client.got.find("eventID") != std::string::npos;
      out.waits.push_back(std::chrono::duration<double, std::milli>(Clock::now() - client.asked).count());
    }
  }
  std::sort(out.waits.begin(), out.waits.end());
  return out;
}

double number(int argc, char** argv, int index, double otherwise) {
  return argc > index ? std::atof(argv[index]) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return std::puts("usage: bench_kslsim KSLSIM [CLIENTS [SECONDS [INTERVAL]]]"), 2;
  const size_t count = static_cast<size_t>(number(argc, argv, 2, 300));
  const double seconds = number(argc, argv, 3, 10);
  const auto interval = std::chrono::milliseconds(static_cast<int>(number(argc, argv, 4, 300)));
  Simulator simulator(argv[1]);
  if (!simulator.port()) return std::puts("the simulator did not start"), 1;

  double before = simulator.used();
  usleep(2000000);
  const double idle = (simulator.used() - before) / 2;

  std::vector<Client> clients(count);
  for (Client& client : clients)
    if (!registered(client, simulator.port())) return std::puts("a client was not registered"), 1;
  pollFor(clients, 1, interval);
  before = simulator.used();
  const auto begin = Clock::now();
  const Result result = pollFor(clients, seconds, interval);
  const double lasted = std::chrono::duration<double>(Clock::now() - begin).count();
  const double used = simulator.used() - before;
  if (result.polls == 0) return std::puts("no poll was answered"), 1;

  const double expected = static_cast<double>(count) * lasted / (static_cast<double>(interval.count()) / 1000);
  std::printf(
    "clients %zu, interval %d ms, %.1f s: %ld polls of %.0f expected, %ld with events, %ld connections lost\n",
    count, static_cast<int>(interval.count()), lasted, result.polls, expected, result.events, result.lost);
  std::printf("answered within: median %.2f ms, 99 %% %.2f ms, all %.2f ms\n",
              result.waits[result.waits.size() / 2], result.waits[result.waits.size() * 99 / 100],
              result.waits.back());
  std::printf("processor: %.1f %% of one core, %.1f %% without clients; %.1f us for each poll\n",
              100 * used / lasted, 100 * idle, 1e6 * (used - idle * lasted) / static_cast<double>(result.polls));
  return 0;
}
