#pragma once

namespace kslsim {

// The HTTP library gives no hold on its connections, and the simulator has to break some. These find them among the
// descriptors of the process by their port numbers on the loopback interface. Any thread.

// Shuts the connection between this server port and that peer port, both ways; the thread that serves it sees its
// end. To be called by that very thread, so that the descriptor cannot be another's meanwhile.
void shutConnection(int serverPort, int peerPort);

// Shuts every connection of the server port, the listening socket apart.
void shutConnections(int serverPort);

}  // namespace kslsim
