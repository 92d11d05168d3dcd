# Whether marrowctl is built, and the libraries that it alone needs: target marrowctl_libraries.

set(MARROWBENCH_COMPANION AUTO CACHE STRING
    "Build marrowctl: AUTO, where its libraries are found; ON, without them an error; OFF")
set_property(CACHE MARROWBENCH_COMPANION PROPERTY STRINGS AUTO ON OFF)
set(MARROWBENCH_LIBRARY_HEADERS "" CACHE PATH
    "Folder with CLI/, nlohmann/ and fmt/; empty: use the installed libraries")

set(builds_marrowctl OFF)
if(MARROWBENCH_COMPANION STREQUAL AUTO OR MARROWBENCH_COMPANION)
  add_library(marrowctl_libraries INTERFACE)
  set(missing_libraries)
  if(MARROWBENCH_LIBRARY_HEADERS)
    foreach(header IN ITEMS CLI/CLI.hpp nlohmann/json.hpp fmt/format.h)
      if(NOT EXISTS ${MARROWBENCH_LIBRARY_HEADERS}/${header})
        list(APPEND missing_libraries ${MARROWBENCH_LIBRARY_HEADERS}/${header})
      endif()
    endforeach()
    target_include_directories(marrowctl_libraries SYSTEM INTERFACE ${MARROWBENCH_LIBRARY_HEADERS})
    set(fmt_headers ${MARROWBENCH_LIBRARY_HEADERS})
  else()
    find_package(CLI11 2.1 CONFIG QUIET)
    find_package(nlohmann_json 3.11 CONFIG QUIET)
    find_package(fmt 9 CONFIG QUIET)
    foreach(library IN ITEMS CLI11 nlohmann_json fmt)
      if(NOT ${library}_FOUND)
        list(APPEND missing_libraries ${library})
      endif()
    endforeach()
    # Nothing of fmt is linked: the program is the same whatever the library was built with.
    target_link_libraries(marrowctl_libraries INTERFACE CLI11::CLI11 nlohmann_json::nlohmann_json)
    if(fmt_FOUND)
      get_target_property(fmt_headers fmt::fmt-header-only INTERFACE_INCLUDE_DIRECTORIES)
      target_include_directories(marrowctl_libraries SYSTEM INTERFACE ${fmt_headers})
    endif()
  endif()

  list(JOIN missing_libraries ", " missing_libraries)
  string(CONCAT how_to_install "install libcli11-dev nlohmann-json3-dev libfmt-dev (Debian) or cli11 "
    "nlohmann-json fmt (Homebrew)")
  if(NOT missing_libraries)
    set(builds_marrowctl ON)
    # fmt_library.cpp names inner parts of fmt, and a newer fmt may have other ones. Where it does not
    # link, every file compiles all of fmt from its headers: the same program, but a longer build.
    try_compile(MARROWBENCH_FMT_COMPILED_ONCE
      SOURCES ${PROJECT_SOURCE_DIR}/src/marrowctl/support/fmt_library.cpp
      SOURCE_FROM_CONTENT user.cpp
        "#include <fmt/format.h>\nint main() { return fmt::format(\"{} {} {}\", 0.5, 1, \"\").empty(); }\n"
      CMAKE_FLAGS "-DINCLUDE_DIRECTORIES=${fmt_headers}")
    if(NOT MARROWBENCH_FMT_COMPILED_ONCE)
      target_compile_definitions(marrowctl_libraries INTERFACE FMT_HEADER_ONLY)
    endif()
  elseif(MARROWBENCH_COMPANION STREQUAL AUTO)
    message(NOTICE "Left out: marrowctl. It needs ${missing_libraries}: ${how_to_install}, or set "
      "MARROWBENCH_COMPANION=OFF.")
  else()
    message(FATAL_ERROR "marrowctl needs ${missing_libraries}: ${how_to_install}")
  endif()
endif()
