# For what is installed and what it is made of: copies past the end of what they write to, and overwritten stacks, end
# the process; the loader's tables are closed before a program begins; programs load anywhere. Tests are built without,
# and beside sanitizers it is of no use.

get_directory_property(options_without_hardening COMPILE_OPTIONS)
if(MEROLT_SANITIZE)
    return()
endif()
add_compile_options(-fstack-protector-strong
    # The C library checks lengths only in optimised code.
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
add_link_options(-Wl,-z,relro,-z,now)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
