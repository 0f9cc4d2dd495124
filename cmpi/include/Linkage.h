// How the wrapper classes are linked: into each provider on its own. Servers load providers with RTLD_GLOBAL, and a
// class of default visibility would be mixed with the class of the same name in the next provider's library.
#pragma once

#define CMPI_PROVIDER_LINKAGE __attribute__((visibility("hidden")))
