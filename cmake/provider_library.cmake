# The provider's library, and where it looks for the management library that came with it: beside its own folder, so
# that a tree works wherever it is unpacked, and at the place of installation, as the loader takes $ORIGIN of a library
# that is reached through a symbolic link for the link's folder. LD_LIBRARY_PATH still comes first.

# CMake can shorten a library's search path at installation and not lengthen it. So the library is installed with a
# path that says the same at length, and what follows writes the real one over it.
string(REPEAT "/." 128 room)
set(path_with_room "$ORIGIN/..${room}")
set_target_properties(Merolt_CNA_Provider PROPERTIES INSTALL_RPATH "${path_with_room}")
install(TARGETS Merolt_CNA_Provider LIBRARY DESTINATION ${merolt_provider_folder} ${to_provider})
if(CMAKE_SKIP_RPATH OR CMAKE_SKIP_INSTALL_RPATH)
    return()
endif()

# The prefix is known only now. The loader knows the system's own folders by itself.
string(CONFIGURE [[
    set(folder "@merolt_provider_folder@")
    cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}/" NORMALIZE)
    cmake_path(GET folder PARENT_PATH libraries)
    set(path "$ORIGIN/..:${libraries}")
    string(LENGTH "${path}" length)
    string(LENGTH "@path_with_room@" most)
    if(length GREATER most)
        message(WARNING "${libraries} is too long a path to be written into the provider. "
                        "If its library is reached through a link, the loader has to know that folder.")
    endif()
    if(length GREATER most OR libraries MATCHES "^/(usr/)?lib(/@CMAKE_LIBRARY_ARCHITECTURE@)?$")
        set(path "$ORIGIN/..")
    endif()
    file(RPATH_CHANGE
        FILE "$ENV{DESTDIR}${folder}/libMerolt_CNA_Provider.so"
        OLD_RPATH "@path_with_room@"
        NEW_RPATH "${path}")
]] set_search_path @ONLY)
install(CODE "${set_search_path}" ${to_provider})
