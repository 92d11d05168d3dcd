# How every target of this project is compiled.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Release, Debug, ..." FORCE)
endif()
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_FLAGS_RELEASE "-O2")

# Figures are rounded alike on every client: no fused multiply-add, no relaxed arithmetic.
add_library(marrowbench_flags INTERFACE)
target_compile_options(marrowbench_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -ffp-contract=off)

if(MARROWBENCH_FUZZ)
  if(NOT MARROWBENCH_SANITIZE)
    message(FATAL_ERROR "MARROWBENCH_FUZZ needs MARROWBENCH_SANITIZE and clang, see the preset fuzz")
  endif()
  target_compile_options(marrowbench_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(MARROWBENCH_SANITIZE)
  target_compile_options(marrowbench_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(marrowbench_flags INTERFACE -fsanitize=address,undefined)
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
  include(CheckPIESupported)
  check_pie_supported()
  include(CheckIPOSupported)
  check_ipo_supported(RESULT ipo_supported OUTPUT ipo_output LANGUAGES CXX)
  if(ipo_supported)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
  endif()
  target_compile_options(marrowbench_flags INTERFACE
    -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  if(NOT APPLE)
    target_link_options(marrowbench_flags INTERFACE -Wl,-z,relro -Wl,-z,now)
  endif()
endif()

# The same standard library on every client, and nothing of it to look up at each start.
set(static_library_options)
if(MARROWBENCH_STATIC_LIBSTDCXX AND NOT APPLE AND NOT MARROWBENCH_SANITIZE)
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static-libstdc++ -static-libgcc)
  check_cxx_source_compiles("#include <iostream>\nint main() { std::cout << 1; }"
    MARROWBENCH_LINKS_STATIC_LIBSTDCXX)
  if(MARROWBENCH_LINKS_STATIC_LIBSTDCXX)
    set(static_library_options ${CMAKE_REQUIRED_LINK_OPTIONS})
  else()
    message(NOTICE "Linked to the shared C++ library: its archive, libstdc++.a, is not installed.")
  endif()
  unset(CMAKE_REQUIRED_LINK_OPTIONS)
endif()
