// Log texts that the associations of the installation services have on both sides.
#pragma once

#include "associations/texts.h"

#include <initializer_list>

namespace merolt::association {

/// Host and service: a double colon in every line of the searches.
constexpr void speakOfHostAndService(Texts& t) {
    t.getInstance.className = "{F}: Error getting ClassName in getInstances\n";
    t.findLeft.nameSpace = "{F}:: Error getting Namespace in {O}\n";
    t.findRight.nameSpace = "{F}:: Error getting namespace in {O}\n";
    for (SearchTexts* search : {&t.findLeft, &t.findRight}) {
        search->key = "{F}:: Error getting {K} key in findMatchedRole1\n";
        search->addKey = {"{F}:: Error addkey Role1 in {O}\n", "{F}:: Error addkey Role2 in {O}\n"};
    }
}

/// Service and capabilities: the two searches have each other's key text.
constexpr void speakOfServiceAndCapabilities(Texts& t) {
    t.names.addKey.role1.sink = Sink::debug;
    t.names.addKey.role2.sink = Sink::debug;
    t.findLeft.nameSpace = "{F}: Error getting Namespace in findMatchedRole1\n";
    t.findLeft.key = "{F}: Error getting InstanceID key in findMatchedRole2\n";
    t.findRight.key = "{F}: Error getting InstanceID key in findMatchedRole1\n";
}

/// Controller and service: the text for keys names DeviceID, also where Name was read.
constexpr void speakOfControllerAndService(Texts& t) {
    t.names.addKey = {
        debugText("Assoc_CPortController_SoftwareInstallationService: Error addkey Role1 in enumInstanceNames\n"),
        debugText("{F}: Error addkey Role2 in enumInstanceNames\n")};
    t.getInstance.className = "{F}: Error getting ClassName in getInstances\n";
    for (SearchTexts* search : {&t.findLeft, &t.findRight}) {
        search->key = "{F}:: Error getting DeviceID key in findMatchedRole1\n";
        search->addKey = {"{F}:: Error addkey Role1 in findMatchedRole1\n",
                          "{F}:: Error addkey Role2 in findMatchedRole1\n"};
    }
}

/// Its referenceNames name the ends by other keys than every other operation.
inline constexpr const char* controllerAndServiceNameKeys[] = {"GroupComponent", "PartComponent"};

} // namespace merolt::association
