#include "vesperatopscreen/AppMain.h"

int main(int argc, char** argv) { ExitProgram(AppMain(argc, argv)); }
