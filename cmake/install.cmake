# What is installed, and where.
include(GNUInstallDirs)

install(TARGETS ${programs})
foreach(page IN LISTS manual_pages)
  string(REGEX REPLACE ".*\\." "" section ${page})
  install(FILES docs/man/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()

# Where each shell looks by itself.
foreach(program IN LISTS programs)
  install(FILES packaging/completion/${program}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES packaging/completion/_${program}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES packaging/completion/${program}.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endforeach()

# Not what a run in the folder itself has left there.
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING PATTERN "*.bst" PATTERN "README.md" PATTERN "_*_log" EXCLUDE)
if(TARGET marrowctl)
  install(DIRECTORY docs/schemas DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.schema.json")
endif()
if(charts_bundle)
  get_filename_component(charts_folder ${charts_bundle} DIRECTORY)
  install(FILES ${charts_folder}/charts-licences.txt DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
endif()
install(FILES CHANGELOG.md packaging/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
