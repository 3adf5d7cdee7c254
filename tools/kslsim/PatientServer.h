#pragma once

#include <httplib.h>

namespace kslsim {

// The HTTP library's server, but for the wait between two requests on a kept connection. The library looks a
// hundred times a second whether the next one has come, which with hundreds of clients costs more than all their
// calls; this one sleeps until it has. A connection that is shut from outside, by the client or by
// shutConnections(), ends the wait; so does `idleSeconds` without a request.
class PatientServer : public httplib::Server {
 public:
  explicit PatientServer(int idleSeconds) : mIdleMilliseconds(idleSeconds * 1000) {}

 private:
  bool process_and_close_socket(socket_t socket) override;

  const int mIdleMilliseconds;
};

}  // namespace kslsim
