#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "tests/vendelo-sdl2/TLogManagerFixture.h"

namespace {

TEST_F(TLogManagerTest, ThreadsWriteWhileTheMainLoopPolls) {
  constexpr int kNumThreads = 4, kNumLines = 250;
  Recorder manager;
  init(manager);
  std::vector<std::thread> threads;
  for (int t = 0; t < kNumThreads; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < kNumLines; ++i) {
        if (i % 2)
          manager.WriteLog(3, 0, "thread %d line %d", t, i);
        else
          logman::WriteLog(3, 0, "thread %d line %d", t, i);
        manager.GetLastLog();
        manager.SetOutputToConsole(false);
      }
    });
  while (manager.entries.size() < kNumThreads * kNumLines) manager.Poll();
  for (auto& thread : threads) thread.join();
  std::vector<int> next(kNumThreads, 0);
  for (const auto& entry : manager.entries) {
    int t = -1, i = -1;
    ASSERT_EQ(std::sscanf(entry.Message.c_str() + 24, ": INFO: thread %d line %d", &t, &i), 2) << entry.Message;
    EXPECT_EQ(i, next.at(t)++);  // each thread's lines in its own order
  }
  manager.Destroy();
  const std::string text = read(dated("app"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3 + kNumThreads * kNumLines);
}

// Each writer's lines, "writer W line N", came once and in their order.
void expectAllInOrder(const std::vector<TLogEntry>& entries, int writers, int lines) {
  EXPECT_EQ(entries.size(), static_cast<size_t>(writers * lines));
  std::vector<int> next(static_cast<size_t>(writers), 0);
  for (const auto& entry : entries) {
    const size_t at = entry.Message.find("writer");
    ASSERT_NE(at, std::string::npos) << entry.Message;
    int w = -1, i = -1;
    ASSERT_EQ(std::sscanf(entry.Message.c_str() + at, "writer %d line %d", &w, &i), 2) << entry.Message;
    EXPECT_EQ(i, next.at(static_cast<size_t>(w))++);
  }
}

TEST_F(TLogManagerTest, TheTeardownMayPollBesideTheMainLoop) {
  constexpr int kNumWriters = 2, kNumLines = 300;
  Recorder manager;
  init(manager);
  std::atomic<int> writing{kNumWriters};
  std::vector<std::thread> threads;
  for (int w = 0; w < kNumWriters; ++w)
    threads.emplace_back([&, w] {
      for (int i = 0; i < kNumLines; ++i) {
        manager.WriteLog(static_cast<unsigned>(i % 12), 0, "writer %d line %d", w, i);
        manager.bAppendPrefix = i % 2 == 0;
      }
      --writing;
    });
  for (int p = 0; p < 2; ++p)
    threads.emplace_back([&] {
      while (writing) {
        EXPECT_EQ(manager.Poll(), 0);
        manager.PopLogHistory();
        EXPECT_FALSE(manager.GetLogFileName().empty());
      }
    });
  for (auto& thread : threads) thread.join();
  manager.Poll();
  expectAllInOrder(manager.entries, kNumWriters, kNumLines);
}

TEST_F(TLogManagerTest, ConsoleLinesOfManyThreadsStayWhole) {
  constexpr int kNumWriters = 4, kNumLines = 100;
  TLogManager manager;
  init(manager);
  manager.SetOutputToConsole(true);
  console();
  std::vector<std::thread> threads;
  for (int w = 0; w < kNumWriters; ++w)
    threads.emplace_back([&, w] {
      for (int i = 0; i < kNumLines; ++i)
        manager.WriteColoredLog(static_cast<char>(w), 4, 0, "writer %d line %d", w, i);
    });
  for (auto& thread : threads) thread.join();
  manager.SetOutputToConsole(false);
  std::istringstream out(console());
  std::vector<TLogEntry> lines;
  for (std::string line; std::getline(out, line);) {
    const size_t colour = line.find("\x1b[38;5;");
    EXPECT_EQ(colour == 0, line.ends_with("\x1b[0m")) << line;
    const size_t begin = colour == 0 ? line.find('m') + 1 : 0;
    EXPECT_EQ(line.substr(begin + 24, 15), ": WARN: writer ") << line;
    EXPECT_EQ(std::count(line.begin(), line.end(), 'w'), 1) << line;
    lines.emplace_back().Message = line;
  }
  expectAllInOrder(lines, kNumWriters, kNumLines);
}

TEST_F(TLogManagerTest, ADestroyOnAnotherThreadEndsTheWriters) {
  TLogManager manager;
  init(manager);
  std::atomic<int> started{0};
  std::vector<std::thread> writers;
  for (int w = 0; w < 3; ++w)
    writers.emplace_back([&] {
      ++started;
      while (manager.WriteLog(3, std::string("until the end")) == 0) logman::Poll();
    });
  while (started < 3) std::this_thread::yield();
  std::thread([&] { manager.Destroy(); }).join();
  for (auto& writer : writers) writer.join();
  EXPECT_EQ(logman::Poll(), -1);
}

TEST_F(TLogManagerTest, ListenersAreCalledWithoutTheLockOfTheQueue) {
  struct Chatty : Recorder {
    void OnWriteLog(const TLogEntry& entry, int linesToGo) override {
      Recorder::OnWriteLog(entry, linesToGo);
      if (entries.size() == 1) std::thread([this] { WriteLog("from another thread"); }).join();
    }
  } manager;
  init(manager);
  manager.WriteLog("first");
  manager.Poll();
  EXPECT_EQ(manager.entries.size(), 1u);  // the new line is for the next time
  manager.Poll();
  ASSERT_EQ(manager.entries.size(), 2u);
  EXPECT_EQ(manager.entries[1].Message.substr(24), ": from another thread");
}

// A disk that takes no more: the day's file is a pipe that nobody empties.
TEST_F(TLogManagerTest, NoWriterWaitsForTheDisk) {
  constexpr int kNumWriters = 4, kNumLines = 500;
  ASSERT_EQ(mkfifo(dated("app").c_str(), 0600), 0);
  const int reader = ::open(dated("app").c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_GE(reader, 0);
  const int room = fcntl(reader, F_SETPIPE_SZ, 4096);
  ASSERT_GT(room, 0);
  TLogManager manager;
  manager.Init(name("app.log"), nullptr, nullptr, false);
  for (int i = 0; i < 20; ++i) manager.WriteLog(std::string(static_cast<size_t>(room), 'x'));
  std::atomic<bool> polled{false}, ended{false};
  std::thread loop([&] {
    manager.Poll();
    polled = true;
    manager.Poll();
    manager.Destroy();
    ended = true;
  });
  const auto full = [&] {
    int bytes = 0;
    return ioctl(reader, FIONREAD, &bytes) == 0 && bytes >= room;
  };
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!full() && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  EXPECT_TRUE(full());

  std::vector<std::future<void>> writers;
  for (int w = 0; w < kNumWriters; ++w)
    writers.push_back(std::async(std::launch::async, [&, w] {
      for (int i = 0; i < kNumLines; ++i) {
        EXPECT_EQ(manager.WriteLog(3, 0, "writer %d line %d", w, i), 0);
        manager.GetLastLog();
      }
    }));
  for (auto& writer : writers)
    EXPECT_EQ(writer.wait_until(deadline), std::future_status::ready) << "a writer waits for the disk";
  EXPECT_FALSE(polled) << "the loop was to wait all the while";

  std::string text;
  char buffer[4096];
  while (!ended) {
    const ssize_t got = ::read(reader, buffer, sizeof buffer);
    if (got > 0) text.append(buffer, static_cast<size_t>(got));
  }
  for (ssize_t got; (got = ::read(reader, buffer, sizeof buffer)) > 0;)
    text.append(buffer, static_cast<size_t>(got));
  loop.join();
  ::close(reader);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2 + 20 + kNumWriters * kNumLines);
  EXPECT_NE(text.find("writer 3 line 499\n"), std::string::npos);
}

}  // namespace
