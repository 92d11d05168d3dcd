# How every target of this project is compiled.

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
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
if(MARROWBENCH_WERROR)
  target_compile_options(marrowbench_flags INTERFACE -Werror)
endif()

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
