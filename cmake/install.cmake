# What is installed and where, and the packages that cpack makes of it.

include(GNUInstallDirs)

set(merolt_provider_folder ${CMAKE_INSTALL_LIBDIR}/cmpi)
set(merolt_data_folder ${CMAKE_INSTALL_DATADIR}/merolt-cna-provider)

# cimhost looks for both from its own place, so that a tree works wherever it is unpacked.
set_source_files_properties(${PROJECT_SOURCE_DIR}/cimhost/cli/installation.cpp
    TARGET_DIRECTORY cimhost_cli
    PROPERTIES COMPILE_DEFINITIONS
        "MEROLT_PROVIDER_FOLDER=\"${merolt_provider_folder}\";MEROLT_DATA_FOLDER=\"${merolt_data_folder}\"")

# From its folder the provider finds the management library that came with it; LD_LIBRARY_PATH still comes first.
set_target_properties(Merolt_CNA_Provider PROPERTIES INSTALL_RPATH "$ORIGIN/..")

install(TARGETS Merolt_CNA_Provider LIBRARY DESTINATION ${merolt_provider_folder})
install(TARGETS tavik LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_SKIP)
install(TARGETS cimhost RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(PROGRAMS scripts/merolt-cna-register DESTINATION ${CMAKE_INSTALL_SBINDIR})

install(DIRECTORY mof/ DESTINATION ${merolt_data_folder}/mof
    FILES_MATCHING PATTERN *.mof PATTERN *.registration)
install(DIRECTORY tavik/fleets/ DESTINATION ${merolt_data_folder}/fleets FILES_MATCHING PATTERN *.json)

install(FILES packaging/man/cimhost.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES packaging/man/meroltcna.properties.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
install(FILES packaging/man/merolt-cna-register.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)

set(documents ${CMAKE_INSTALL_DATADIR}/doc/merolt-cna-provider)
install(FILES README.md CHANGELOG.md DESTINATION ${documents})
install(DIRECTORY docs/ DESTINATION ${documents}/docs FILES_MATCHING PATTERN *.md)
install(FILES packaging/meroltcna.properties DESTINATION ${documents}/examples)

# systemd looks in lib/systemd, whatever folder the libraries of this machine lie in. The prefix is known only at
# installation: packages and `cmake --install --prefix` choose their own.
install(CODE "
    set(bin_folder \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    configure_file(\"${PROJECT_SOURCE_DIR}/packaging/systemd/merolt-cimhost.service.in\"
                   \"${CMAKE_CURRENT_BINARY_DIR}/merolt-cimhost.service\" @ONLY)")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/merolt-cimhost.service DESTINATION lib/systemd/system)

# The registrations as the script prints them, for those who register by hand.
set(registration_folder ${CMAKE_BINARY_DIR}/${merolt_data_folder}/registration)
set(registrations)
foreach(registration openpegasus:merolt_cna_provider_registration.mof sfcb:merolt_cna_provider.reg)
    string(REGEX REPLACE ":.*" "" server ${registration})
    string(REGEX REPLACE ".*:" "" name ${registration})
    add_custom_command(
        OUTPUT ${registration_folder}/${name}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${registration_folder}
        COMMAND sh ${PROJECT_SOURCE_DIR}/scripts/merolt-cna-register print ${server}
            --data ${PROJECT_SOURCE_DIR}/mof > ${registration_folder}/${name}
        DEPENDS scripts/merolt-cna-register mof/cimhost.registration
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "Registration for ${server}"
        VERBATIM)
    list(APPEND registrations ${registration_folder}/${name})
endforeach()
add_custom_target(registrations ALL DEPENDS ${registrations})
install(FILES ${registrations} DESTINATION ${merolt_data_folder}/registration)

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
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "sblim-wbemcli")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/prerm)
include(CPack)
