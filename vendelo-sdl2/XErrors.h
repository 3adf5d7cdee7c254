#pragma once

namespace vendelo_sdl2 {

// From here on the log gets, and has on the disk, why the X server ends the program: that it is gone, or which
// request it has refused. The end itself stays as it was. After SDL's video, on the main thread; without an X
// server nothing happens.
void LogXErrors();

}  // namespace vendelo_sdl2
