# Applies Debian's policy to the installed tree before it is packed: man page and changelogs are
# compressed without a time stamp, and the file "copyright" contains the license.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()

set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
set(documents ${share}/doc/velmora)
file(REMOVE ${documents}/LICENSE)
file(RENAME ${documents}/CHANGELOG.md ${documents}/changelog)
configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${documents}/copyright COPYONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog ${documents}/changelog.Debian COPYONLY)
execute_process(
    COMMAND gzip -9n ${documents}/changelog ${documents}/changelog.Debian ${share}/man/man1/velmora.1
    COMMAND_ERROR_IS_FATAL ANY)
