#include "vesperatopscreen/GamePath.h"

namespace {

bool leadsOut(const std::string& name) {
  return name.find('/') != std::string::npos || name.find("..") != std::string::npos;
}

}  // namespace

std::string gamePath(const std::string& game, const std::string& name) {
  if (leadsOut(game) || leadsOut(name)) return {};
  return "Games/" + game + "/Icons/" + name;
}
