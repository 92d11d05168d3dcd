# What cpack makes, see scripts/package: an archive for every system, deb and rpm for Linux.

set(CPACK_PACKAGE_CONTACT "the Marrowbench authors")
set(CPACK_PACKAGE_VENDOR "the Marrowbench authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Measure how fast files are copied, read and written")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
  "Measures a disk or a file share through C++ file streams, C stdio and POSIX descriptors, from "
  "many clients at once that append to one table.")
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
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION utils)
  string(REPLACE x86_64 amd64 CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${package_processor}")
  set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
  set(CPACK_RPM_PACKAGE_LICENSE MIT)
  string(REPLACE arm64 aarch64 CPACK_RPM_PACKAGE_ARCHITECTURE "${package_processor}")
  # These folders belong to other packages.
  set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION /usr/share/man /usr/share/man/man1
    /usr/share/man/man5 /usr/share/bash-completion /usr/share/bash-completion/completions
    /usr/share/zsh /usr/share/zsh/site-functions /usr/share/fish /usr/share/fish/vendor_completions.d)
endif()
include(CPack)
