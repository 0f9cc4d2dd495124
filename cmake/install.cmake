# What is installed and where.

include(GNUInstallDirs)

set(merolt_provider_folder ${CMAKE_INSTALL_LIBDIR}/cmpi)
set(merolt_data_folder ${CMAKE_INSTALL_DATADIR}/merolt-cna-provider)

# cimhost looks for both from its own place, so that a tree works wherever it is unpacked.
set_source_files_properties(${PROJECT_SOURCE_DIR}/cimhost/cli/installation.cpp
    TARGET_DIRECTORY cimhost_cli
    PROPERTIES COMPILE_DEFINITIONS
        "MEROLT_PROVIDER_FOLDER=\"${merolt_provider_folder}\";MEROLT_DATA_FOLDER=\"${merolt_data_folder}\"")

# Two components, which a plain `cmake --install` installs both: the provider with all that a CIM server and its
# administrator need, and the programs that are of use without one.
set(to_provider COMPONENT provider)
set(to_tools COMPONENT tools)

# A relative prefix starts where `cmake --install` is called; what is written into files has to hold everywhere. The
# root folder comes as an empty text.
install(CODE [[
    if(CMAKE_INSTALL_PREFIX)
        cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX NORMALIZE)
    endif()
]] ALL_COMPONENTS)

include(${CMAKE_CURRENT_LIST_DIR}/provider_library.cmake)
install(TARGETS tavik LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_SKIP ${to_provider})
install(PROGRAMS scripts/merolt-cna-register DESTINATION ${CMAKE_INSTALL_SBINDIR} ${to_provider})
install(TARGETS cimhost tavik_host_dump RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ${to_tools})
install(PROGRAMS tavik/host/record-host.sh DESTINATION ${merolt_data_folder} ${to_tools})

install(DIRECTORY ${merolt_mof_folder}/ DESTINATION ${merolt_data_folder}/mof ${to_provider}
    FILES_MATCHING PATTERN *.mof PATTERN *.registration PATTERN *.presentation)
install(DIRECTORY tavik/fleets/ DESTINATION ${merolt_data_folder}/fleets ${to_provider} FILES_MATCHING PATTERN *.json)

install(FILES packaging/prometheus/merolt-cna.rules.yml DESTINATION ${merolt_data_folder}/prometheus ${to_tools})
install(FILES packaging/grafana/merolt-cna.json DESTINATION ${merolt_data_folder}/grafana ${to_tools})

install(FILES packaging/man/cimhost.1 packaging/man/tavik_host_dump.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 ${to_tools})
install(FILES packaging/man/meroltcna.properties.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 ${to_provider})
install(FILES packaging/man/merolt-cna-register.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 ${to_provider})

install(FILES packaging/completion/cimhost.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME cimhost ${to_tools})
install(FILES packaging/completion/_cimhost DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions ${to_tools})

# What is written for those who have the sources stays with them: README.md, CONTRIBUTING.md, docs/architecture.md.
set(documents ${CMAKE_INSTALL_DATADIR}/doc/merolt-cna-provider)
install(FILES CHANGELOG.md DESTINATION ${documents} ${to_provider})
install(DIRECTORY docs/ DESTINATION ${documents}/docs ${to_provider}
    FILES_MATCHING PATTERN *.md PATTERN architecture.md EXCLUDE)
install(FILES packaging/meroltcna.properties DESTINATION ${documents}/examples ${to_provider})

# systemd looks in lib/systemd, whatever folder the libraries of this machine lie in. The prefix is known only at
# installation: packages and `cmake --install --prefix` choose their own.
install(CODE "
    set(bin_folder \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    configure_file(\"${PROJECT_SOURCE_DIR}/packaging/systemd/merolt-cimhost.service.in\"
                   \"${CMAKE_CURRENT_BINARY_DIR}/merolt-cimhost.service\" @ONLY)" ${to_tools})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/merolt-cimhost.service DESTINATION lib/systemd/system ${to_tools})

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
            --data ${merolt_mof_folder} > ${registration_folder}/${name}
        DEPENDS scripts/merolt-cna-register ${merolt_mof_stamp}
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "Registration for ${server}"
        VERBATIM)
    list(APPEND registrations ${registration_folder}/${name})
endforeach()
add_custom_target(registrations ALL DEPENDS ${registrations})
# Who builds the provider alone can install its component.
add_dependencies(Merolt_CNA_Provider mof registrations)
install(FILES ${registrations} DESTINATION ${merolt_data_folder}/registration ${to_provider})

include(${CMAKE_CURRENT_LIST_DIR}/packages.cmake)
