# What every target of ours is built with.

# Whoever starts a build, ccache works alike: another clone of the same sources finds its objects, wherever it lies, and
# precompiled headers are known by their content.
find_program(CCACHE_PROGRAM ccache)
find_program(ENV_PROGRAM env)
if(CCACHE_PROGRAM AND ENV_PROGRAM)
    set(ccache ${ENV_PROGRAM} CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_ctime,include_file_mtime ${CCACHE_PROGRAM})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${ccache})
    set(CMAKE_C_COMPILER_LAUNCHER ${ccache})
endif()

# Our own code: link against this to be held to the project's warnings.
add_library(merolt_options INTERFACE)
target_compile_options(merolt_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor $<$<BOOL:${MEROLT_WERROR}>:-Werror>)
# GCC 12 sees overlaps in std::string's operator+ that are not there, from -O3 on.
target_compile_options(merolt_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

if(MEROLT_SANITIZE)
    add_compile_options(-fsanitize=${MEROLT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${MEROLT_SANITIZE})
endif()

# Binaries find the build's libraries beside them, and LD_LIBRARY_PATH can still put another libtavik.so.1 in front:
# that needs DT_RUNPATH and not DT_RPATH.
add_link_options(-Wl,--enable-new-dtags)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
