# The packages that cpack makes of what is installed.

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME merolt-cna-provider)
set(CPACK_PACKAGE_VENDOR "Merolt Corporation")
set(CPACK_PACKAGE_CONTACT "Merolt Corporation <cim@merolt.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "CMPI provider for converged network adapters")
set(CPACK_PACKAGE_DESCRIPTION
"Publishes Fibre Channel, FCoE and Ethernet adapters as CIM objects through any
CIM server that speaks CMPI 2.0. Comes with an adapter management library, a
small CIM server for a first look, and what registers the provider with
OpenPegasus and sfcb.")
# Files that name the prefix, and the search path of a library, get this one and not that of cpack's own folder.
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_SET_DESTDIR ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pci.ids")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "sblim-wbemcli")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(debian ${PROJECT_SOURCE_DIR}/packaging/debian)
set(CPACK_DEBIAN_PACKAGE_CONFLICTS merolt-cna-provider-only)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${debian}/conffiles ${debian}/postinst ${debian}/prerm ${debian}/postrm ${debian}/triggers)
# Copyright, changelog and compressed manual pages, where Debian wants them.
set(CPACK_PRE_BUILD_SCRIPTS ${debian}/documents.cmake ${PROJECT_SOURCE_DIR}/packaging/folders.cmake)
set(CPACK_MEROLT_DEBIAN_FOLDER ${debian})
include(CPack)

# The same for the provider alone, for a build against an installed CMPI package or a machine that runs no cimhost. It
# has no service to look after.
configure_file(${CMAKE_CURRENT_LIST_DIR}/provider_package.cmake.in
    ${CMAKE_BINARY_DIR}/CPackProviderConfig.cmake @ONLY)
