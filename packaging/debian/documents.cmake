# Run by cpack before it packs: what Debian wants in a package and no other installation needs.

if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()

set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
set(documents ${share}/doc/${CPACK_PACKAGE_NAME})
# In the sources they may be closed to others.
file(COPY ${CPACK_MEROLT_DEBIAN_FOLDER}/copyright ${CPACK_MEROLT_DEBIAN_FOLDER}/changelog
    DESTINATION ${documents}
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(GLOB pages ${share}/man/man*/*)
# What an administrator sets stays at an upgrade, and goes with a purge.
if(EXISTS ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/lib/systemd/system/merolt-cimhost.service)
    configure_file(${CPACK_MEROLT_DEBIAN_FOLDER}/merolt-cimhost.default
        ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/etc/default/merolt-cimhost
        COPYONLY FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endif()
execute_process(COMMAND gzip -9n ${documents}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)
