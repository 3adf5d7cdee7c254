# What the program stands on, all from Debian packages (script/bootstrap installs them).
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(SDL REQUIRED IMPORTED_TARGET sdl2 SDL2_image SDL2_ttf SDL2_mixer)
pkg_check_modules(PNG REQUIRED IMPORTED_TARGET libpng)
pkg_check_modules(X11 REQUIRED IMPORTED_TARGET x11)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)

# xmlrpc-c brings no pkg-config files, and its own xmlrpc-c-config names libraries that it does not need.
foreach(lib xmlrpc_client++ xmlrpc_client xmlrpc++ xmlrpc xmlrpc_util)
  string(MAKE_C_IDENTIFIER ${lib} id)
  find_library(LIB_${id} ${lib} REQUIRED)
  list(APPEND XMLRPC_LIBRARIES ${LIB_${id}})
endforeach()

find_path(RAPIDXML_INCLUDE_DIR rapidxml/rapidxml.hpp REQUIRED)

add_library(topscreen_dependencies INTERFACE)
target_link_libraries(topscreen_dependencies INTERFACE PkgConfig::SDL PkgConfig::PNG PkgConfig::SYSTEMD PkgConfig::X11 ${XMLRPC_LIBRARIES}
                      Threads::Threads)
