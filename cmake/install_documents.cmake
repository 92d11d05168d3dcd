# What is installed besides the program.
include(GNUInstallDirs)

install(FILES docs/man/marrowbench.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/man/marrowbench-settings.5 docs/man/marrowbench-table.5
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)

# Where each shell looks by itself.
install(FILES packaging/completion/marrowbench
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES packaging/completion/_marrowbench
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES packaging/completion/marrowbench.fish
  DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# Not what a run in the folder itself has left there.
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING PATTERN "*.bst" PATTERN "README.md" PATTERN "_*_log" EXCLUDE)
# Under the name by which Debian looks for it.
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright)
