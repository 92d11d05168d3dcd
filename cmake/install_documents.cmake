# What is installed besides the program.
include(GNUInstallDirs)

install(FILES docs/man/marrowbench.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/man/marrowbench-settings.5 docs/man/marrowbench-table.5
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
