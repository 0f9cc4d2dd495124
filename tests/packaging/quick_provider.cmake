# The provider's files read the standard library once for all of them, which takes most of the time without optimisation.
cmake_language(DEFER CALL target_precompile_headers merolt_provider PRIVATE
    <algorithm> <array> <atomic> <chrono> <cstdint> <cstdio> <cstring> <filesystem> <fstream> <functional> <map> <memory>
    <mutex> <optional> <string> <string_view> <thread> <vector>)
