# The Debian package: scripts/package.sh builds, and runs `cpack` in the build folder.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME selvane)
set(CPACK_PACKAGE_CONTACT "The Selvane project <selvane@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "workbench for mining association rules from biomedical abstracts")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian-documents.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Selvane finds association rules between the terms of biomedical abstracts. It
takes abstracts in which a tagger has marked terms, and a taxonomy that says
which term is a kind of which other. Terms are generalized along the taxonomy,
so that several rare terms can show together what none of them shows alone.
.
")
if(SELVANE_WINDOWS)
  # The pictures are SVG. Qt loads the plugin that draws them at run time, so no program is linked to it.
  set(CPACK_DEBIAN_PACKAGE_DEPENDS libqt6svg6)
  string(APPEND CPACK_DEBIAN_PACKAGE_DESCRIPTION
"The package holds the workbench selvane, with a window for each step from a
taxonomy file to rules, and the command line selvane-cli.")
else()
  string(APPEND CPACK_DEBIAN_PACKAGE_DESCRIPTION "The package holds the command line selvane-cli.")
endif()
include(CPack)
