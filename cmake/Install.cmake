# What belongs to an installed top screen, in the folders of GNUInstallDirs. Three components, of which a distribution
# makes three packages: topscreen (the program), skin (the demo skin with its games), tools (simulator and designers'
# tools). Debian's are made by packaging/debian.
include(GNUInstallDirs)

install(TARGETS topscreen RUNTIME COMPONENT topscreen)
install(FILES docs/OPERATING.md docs/INTEGRATION.md TYPE DOC COMPONENT topscreen)
install(PROGRAMS packaging/topscreen-shot TYPE BIN COMPONENT topscreen)
install(FILES packaging/man/topscreen.1 packaging/man/topscreen-shot.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT topscreen)

install(TARGETS kslsim skincheck fontpack atlaspack skinplaces RUNTIME COMPONENT tools)
foreach(tool kslsim skincheck fontpack atlaspack skinplaces)
  install(FILES packaging/man/${tool}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endforeach()
install(FILES docs/SIMULATOR.md docs/SKINS.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/topscreen-tools COMPONENT tools)
install(DIRECTORY docs/images DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/topscreen-tools COMPONENT tools)
install(FILES tools/tour/evening.json DESTINATION ${CMAKE_INSTALL_DATADIR}/topscreen/tours COMPONENT tools)

# Drawn by the target `skin`, which has to be built before this component is installed.
install(DIRECTORY ${PROJECT_BINARY_DIR}/skin/ DESTINATION ${CMAKE_INSTALL_DATADIR}/topscreen/skin-demo COMPONENT skin)
