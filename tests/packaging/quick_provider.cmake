# The provider is compiled without optimisation here, and reads the standard library once for all its files. All else is
# compiled as in the build that runs the test, so that ccache has it.
cmake_language(DEFER CALL target_compile_options merolt_provider PRIVATE -O0 -g0)
cmake_language(DEFER CALL target_precompile_headers merolt_provider PRIVATE
    <algorithm> <array> <atomic> <chrono> <cstdint> <cstdio> <cstring> <filesystem> <fstream> <functional> <map> <memory>
    <mutex> <optional> <string> <string_view> <thread> <vector>)
