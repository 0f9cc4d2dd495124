/* A provider whose first build never ends. */
#include "cmpidt.h"
#include "cmpift.h"

#include <stdio.h>
#include <unistd.h>

__attribute__((visibility("default"))) CMPIInstanceMI*
Merolt_CNA_Provider_Create_InstanceMI(const CMPIBroker* broker, const CMPIContext* context, CMPIStatus* status);

CMPIInstanceMI* Merolt_CNA_Provider_Create_InstanceMI(const CMPIBroker* broker, const CMPIContext* context,
                                                      CMPIStatus* status) {
    (void)broker;
    (void)context;
    (void)status;
    puts("building");
    fflush(stdout);
    for (;;)
        pause();
}
