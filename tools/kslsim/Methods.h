#pragma once

#include <xmlrpc-c/registry.hpp>

#include "tools/kslsim/Simulator.h"

namespace kslsim {

// Puts the methods of the service into the registry, each with its entry in the log of requests. A method that is
// not known is logged too and answered with the library's own fault. The simulator outlives the registry; the
// methods run on any thread, several at once.
void addMethods(xmlrpc_c::registry& registry, Simulator& simulator);

// The names of all methods of the service.
std::vector<std::string> methodNames();

// The method's name in the XML text of a call; empty when there is none.
std::string methodNameIn(const std::string& callXml);

}  // namespace kslsim
