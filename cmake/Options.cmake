# Compiler flags of our own code. TOPSCREEN_SANITIZER: empty, "address" (with undefined behaviour and leaks)
# or "thread".
set(TOPSCREEN_SANITIZER "" CACHE STRING "Sanitizer of this build: empty, address or thread")

# What others wrote is read once and kept; our own headers stay out, so that a change rebuilds what includes them and no
# more. Off where each file has to show that it includes what it uses: debug, script/check tidy and clang.
option(TOPSCREEN_PCH "Precompile the headers of the libraries" OFF)

# Instead of tools and tests: what reads bytes from outside, with libFuzzer (script/fuzz). Clang alone has it.
option(TOPSCREEN_FUZZ "The fuzz targets" OFF)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
  set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
  if(TOPSCREEN_PCH)
    # Without these the cache refuses whatever uses a precompiled header.
    list(PREPEND CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros)
  endif()
endif()

# topscreen_precompile(<target> <header>...)
function(topscreen_precompile target)
  if(TOPSCREEN_PCH)
    list(TRANSFORM ARGN REPLACE "^(.+)$" "<\\1>")
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# topscreen_reuse_precompiled(<target> <other>): what <other> has precompiled; both are compiled alike.
function(topscreen_reuse_precompiled target other)
  if(TOPSCREEN_PCH)
    target_precompile_headers(${target} REUSE_FROM ${other})
  endif()
endfunction()

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

# topscreen_harden(<target>): as a distribution builds what meets the network. The sanitizers replace what is checked
# here; without optimisation the library has no checked functions.
function(topscreen_harden target)
  if(NOT TOPSCREEN_SHARED)
    target_compile_options(${target} PRIVATE -fPIE)
  endif()
  if(TOPSCREEN_SANITIZER STREQUAL "")
    target_compile_options(${target} PRIVATE -fstack-protector-strong
      "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  endif()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    target_link_options(${target} PRIVATE -pie LINKER:-z,relro,-z,now)
  endif()
endfunction()

if(TOPSCREEN_SANITIZER STREQUAL "address")
  # "undefined" leaves out conversions of numbers that the integer cannot hold; a service or a skin may bring them.
  target_compile_options(topscreen_options INTERFACE -fsanitize=address,undefined,float-cast-overflow
                                                     -fno-sanitize-recover=undefined,float-cast-overflow)
  target_link_options(topscreen_options INTERFACE -fsanitize=address,undefined,float-cast-overflow)
elseif(TOPSCREEN_SANITIZER STREQUAL "thread")
  target_compile_options(topscreen_options INTERFACE -fsanitize=thread)
  target_link_options(topscreen_options INTERFACE -fsanitize=thread)
elseif(NOT TOPSCREEN_SANITIZER STREQUAL "")
  message(FATAL_ERROR "TOPSCREEN_SANITIZER is empty, address or thread, not ${TOPSCREEN_SANITIZER}")
endif()

if(TOPSCREEN_FUZZ)
  target_compile_options(topscreen_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
