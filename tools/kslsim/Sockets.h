#pragma once

#include <string>

namespace kslsim {

// The HTTP library gives no hold on its connections, and the simulator has to break some. These find them among the
// descriptors of the process by their port numbers on the loopback interface. Any thread.

// One connection between this server port and that peer port. To be made and used by the very thread that serves
// the connection, so that the descriptor cannot be another's meanwhile. Every operation is without effect on a
// connection that was not found.
class Connection {
 public:
  Connection(int serverPort, int peerPort);

  // Shuts it both ways; the thread that serves it sees its end.
  void shut() const;

  // Sends the bytes as they are. False when the peer has gone.
  bool send(const std::string& bytes) const;

  // Whether the peer has shut its side.
  bool peerGone() const;

 private:
  int mSocket = -1;
};

// Shuts every connection of the server port, the listening socket apart.
void shutConnections(int serverPort);

}  // namespace kslsim
