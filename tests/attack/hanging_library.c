/* Loaded before the management library: its question for a port's properties does not come back as long as there is the
   file that HANG_WHILE names. */
#define _GNU_SOURCE

#include <dlfcn.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

unsigned int TAVIK_GetHbaDevicePortProperty(unsigned int handle, unsigned int port, void* property);

__attribute__((visibility("default"))) unsigned int TAVIK_GetHbaDevicePortProperty(unsigned int handle,
                                                                                   unsigned int port, void* property) {
    typedef unsigned int (*Question)(unsigned int, unsigned int, void*);
    const char* file = getenv("HANG_WHILE");
    const struct timespec pause = {0, 20 * 1000 * 1000};
    Question real;
    while (file && access(file, F_OK) == 0)
        nanosleep(&pause, NULL);
    *(void**)&real = dlsym(RTLD_NEXT, "TAVIK_GetHbaDevicePortProperty");
    return real(handle, port, property);
}
