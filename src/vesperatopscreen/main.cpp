#include "vendelo-sdl2/TConsole.h"
#include "vesperatopscreen/AppMain.h"

int main(int argc, char** argv) {
  TConsole::Guard();
  ExitProgram(AppMain(argc, argv));
}
