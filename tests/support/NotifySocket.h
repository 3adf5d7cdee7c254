#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// The place of the service manager: the socket to which a service's notices go, in a folder of its own.
class NotifySocket {
 public:
  NotifySocket() {
    char folder[] = "/tmp/notifyXXXXXX";
    mFolder = mkdtemp(folder);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path().c_str(), sizeof address.sun_path - 1);
    mSocket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    EXPECT_EQ(bind(mSocket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
  ~NotifySocket() {
    close(mSocket);
    unlink(path().c_str());
    rmdir(mFolder.c_str());
  }
  NotifySocket(const NotifySocket&) = delete;
  NotifySocket& operator=(const NotifySocket&) = delete;

  std::string path() const { return mFolder + "/socket"; }

  // What has come since the last call, in its order.
  std::vector<std::string> take() {
    std::vector<std::string> messages;
    char text[4096];
    for (ssize_t length = 0; (length = recv(mSocket, text, sizeof text, 0)) >= 0;)
      messages.emplace_back(text, static_cast<size_t>(length));
    return messages;
  }

 private:
  std::string mFolder;
  int mSocket = -1;
};
