#pragma once

#include <sys/socket.h>
#include <sys/types.h>

namespace MyUtils {

// The network calls that a test must be able to answer itself. Each pointer starts at the real call. Any thread
// calls through them; they are changed only by tests, before any second thread exists.
struct TNetworkSeams {
  int (*Socket)(int Domain, int Type, int Protocol);                // socket(2)
  int (*Ioctl)(int Socket, unsigned long Request, void* Argument);  // ioctl(2)
  ssize_t (*SendTo)(int Socket, const void* Data, size_t Length, int Flags, const sockaddr* To,
                    socklen_t ToLength);  // sendto(2)
};

// The seams in force.
extern TNetworkSeams NetworkSeams;

}  // namespace MyUtils
