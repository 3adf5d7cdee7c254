#include "vesperatopscreen/AppMain.h"

int main(int argc, char** argv) { EndProcess(AppMain(argc, argv)); }
