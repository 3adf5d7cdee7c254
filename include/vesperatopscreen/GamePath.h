#pragma once

#include <string>

// The path of a game's folder of pictures, "Games/<game>/Icons/", or of a name in it, relative to the working
// directory; empty when one of the names holds "/" or "..". Every path made from a name that the service sent comes
// from here, so that nothing outside the games' own folders is ever read. Any thread.
std::string gamePath(const std::string& game, const std::string& name = "");
