# Run by cpack on the files of the package: what Debian wants of documents and a plain install has no need of.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
set(doc ${share}/doc/selvane)
find_program(GZIP gzip REQUIRED)

# Debian's name for the licence.
file(COPY_FILE ${doc}/LICENSE ${doc}/copyright)

# The day is the one of SOURCE_DATE_EPOCH when that is set.
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${doc}/changelog
"selvane (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; CHANGELOG.md in the sources tells what is new.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")

file(GLOB pages ${share}/man/man1/*.1)
execute_process(COMMAND ${GZIP} -9n ${doc}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)

# Folders, and the files made here, have their permissions from the umask.
set(all_read OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
set(all_search OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)
file(CHMOD_RECURSE ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}
     DIRECTORY_PERMISSIONS ${all_read} ${all_search})
file(CHMOD_RECURSE ${doc} FILE_PERMISSIONS ${all_read})
