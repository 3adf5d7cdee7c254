#include <unistd.h>
#include <cstdio>

#include "vesperatopscreen/AppMain.h"

int main(int argc, char** argv) {
  const int result = AppMain(argc, argv);
  std::fflush(nullptr);
  // After an exception the application's threads still run: static objects must not be destroyed under them.
  if (result == -4 || result == -6) _exit(result);
  return result;
}
