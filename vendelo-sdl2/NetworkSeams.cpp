#include "vendelo-sdl2/NetworkSeams.h"

#include <sys/ioctl.h>

namespace MyUtils {

TNetworkSeams NetworkSeams = {
  ::socket,
  [](int Socket, unsigned long Request, void* Argument) { return ::ioctl(Socket, Request, Argument); },
  ::sendto,
};

}  // namespace MyUtils
