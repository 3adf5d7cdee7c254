# Compiler flags of our own code. TOPSCREEN_SANITIZER: empty, "address" (with undefined behaviour and leaks)
# or "thread".
set(TOPSCREEN_SANITIZER "" CACHE STRING "Sanitizer of this build: empty, address or thread")

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
  set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_library(topscreen_options INTERFACE)
target_compile_options(topscreen_options INTERFACE -Wall -Wextra -Werror -fno-omit-frame-pointer)
# g++ 12 reports overlapping copies inside std::string's own operator+ at -O2, where there are none.
target_compile_options(topscreen_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
# The names of the frames in a crash report come from the dynamic symbol table.
target_link_options(topscreen_options INTERFACE -rdynamic)

find_program(MOLD_PROGRAM mold)
if(MOLD_PROGRAM)
  target_link_options(topscreen_options INTERFACE -fuse-ld=mold)
endif()

if(TOPSCREEN_SANITIZER STREQUAL "address")
  target_compile_options(topscreen_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined)
  target_link_options(topscreen_options INTERFACE -fsanitize=address,undefined)
elseif(TOPSCREEN_SANITIZER STREQUAL "thread")
  target_compile_options(topscreen_options INTERFACE -fsanitize=thread)
  target_link_options(topscreen_options INTERFACE -fsanitize=thread)
elseif(NOT TOPSCREEN_SANITIZER STREQUAL "")
  message(FATAL_ERROR "TOPSCREEN_SANITIZER is empty, address or thread, not ${TOPSCREEN_SANITIZER}")
endif()
