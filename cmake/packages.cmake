# What cpack makes, see scripts/package: an archive for every system, deb and rpm for Linux.

set(CPACK_PACKAGE_CONTACT "The Marrowbench authors <marrowbench@example.org>")
set(CPACK_PACKAGE_VENDOR "The Marrowbench authors")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
  "Measures a disk or a file share through C++ file streams, C stdio and POSIX\n"
  "descriptors, from many clients at once that append to one table.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)

string(TOLOWER "${CMAKE_SYSTEM_NAME}" package_system)
if(APPLE)
  set(package_system macos)
endif()
string(REPLACE aarch64 arm64 package_processor "${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-${package_system}-${package_processor})

if(CMAKE_SYSTEM_NAME STREQUAL Linux)
  list(APPEND CPACK_GENERATOR DEB RPM)
  set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/package_layout.cmake)
  set(package_release 1)
  # The time of the build, or what SOURCE_DATE_EPOCH says.
  string(TIMESTAMP debian_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  string(TIMESTAMP rpm_date "%a %b %d %Y" UTC)
  foreach(kind IN ITEMS debian rpm)
    configure_file(packaging/${kind}.changelog.in ${kind}.changelog @ONLY)
  endforeach()

  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_RELEASE ${package_release})
  set(CPACK_DEBIAN_PACKAGE_SECTION utils)
  string(REPLACE x86_64 amd64 CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${package_processor}")
  set(CPACK_DEBIAN_CHANGELOG ${PROJECT_BINARY_DIR}/debian.changelog)

  set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
  set(CPACK_RPM_PACKAGE_RELEASE ${package_release})
  set(CPACK_RPM_PACKAGE_LICENSE "MIT AND Apache-2.0 WITH LLVM-exception AND BSD-3-Clause AND ISC")
  string(REPLACE arm64 aarch64 CPACK_RPM_PACKAGE_ARCHITECTURE "${package_processor}")
  set(CPACK_RPM_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
  set(CPACK_RPM_SPEC_MORE_DEFINE "%define packager ${CPACK_PACKAGE_CONTACT}")
  set(CPACK_RPM_CHANGELOG_FILE ${PROJECT_BINARY_DIR}/rpm.changelog)
  # These folders belong to other packages.
  set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION /usr/share/man /usr/share/man/man1
    /usr/share/man/man5 /usr/share/bash-completion /usr/share/bash-completion/completions
    /usr/share/zsh /usr/share/zsh/site-functions /usr/share/fish /usr/share/fish/vendor_completions.d)
endif()
include(CPack)
