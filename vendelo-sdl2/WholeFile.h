#pragma once

#include <sys/types.h>
#include <string>
#include <string_view>

namespace vendelo_sdl2 {

// Writes a file that others read at any moment: whole or not at all. It is written beside its place, as PATH.part,
// and renamed when all of it is on the disk; what stood there before stays until then. `mode` holds whatever the
// process's mask is. Any thread, one at a time for a path.
// The cause of a failure, empty for none; nothing of it is left then.
std::string WriteWholeFile(const std::string& path, std::string_view content, mode_t mode);

}  // namespace vendelo_sdl2
