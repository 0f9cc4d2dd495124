// Log texts that single Ethernet families share.
#pragma once

#include "associations/texts.h"

#include <initializer_list>

namespace merolt::association::nic {

/// Opening lines of the two enumerations and of getInstance that name the function.
constexpr void openWithFunctionNames(Texts& t) {
    t.names.open = "{F}: enumInstanceNames_{T} was called\n";
    t.instances.open = "{F}: enumInstances_{T} was called\n";
    t.getInstance.open = "{F}: getInstance_{T} was called\n";
}

/// The same, of the four requests too.
constexpr void openAllWithFunctionNames(Texts& t) {
    openWithFunctionNames(t);
    for (Text& open : t.requests.open)
        open = "{F}: {O}_{T} was called\n";
}

/// Failed keys of the searches' association paths.
constexpr void addKeyInFindRole(Texts& t) {
    t.findLeft.addKey = {"{F}: Error addkey Role1 in findRole1\n", "{F}: Error addkey Role2 in findRole1\n"};
    t.findRight.addKey = {"{F}: Error addkey Role1 in findRole2\n", "{F}: Error addkey Role2 in findRole2\n"};
}

/// The three families of physical elements.
constexpr void speakOfPhysicalElement(Texts& t) {
    openAllWithFunctionNames(t);
    t.names.nameSpace = "{F}: Error getting namespace i enumInstancesNames\n";
    t.names.addKey = {"{F}: Error addkey Role1 in enumInstances\n", "{F}: Error addkey Role2 in enumInstances\n"};
    t.instances.nameSpace = "{F}: Error getting namespace\n";
    t.getInstance.nameSpace = "{F}: Error getting namespace getInstance\n";
    t.getInstance.className = "{F}: Error getting ClassName getInstance\n";
    t.findLeft.nameSpace = "{F}: Error getting namespace in findRole1\n";
    t.findRight.nameSpace = "{F}: Error getting namespace in findRole2\n";
    addKeyInFindRole(t);
}

constexpr void logAddKeyOfNamesAsDebug(Texts& t) {
    for (AddKeyTexts* texts : {&t.names.addKey, &t.names.addKeyOfSecondRow}) {
        texts->role1.sink = Sink::debug;
        texts->role2.sink = Sink::debug;
    }
}

/// Every line about an error goes to the debug log.
constexpr void logErrorsAsDebug(Texts& t) {
    logAddKeyOfNamesAsDebug(t);
    t.names.nameSpace.sink = Sink::debug;
    t.instances.nameSpace.sink = Sink::debug;
    t.getInstance.nameSpace.sink = Sink::debug;
    t.getInstance.className.sink = Sink::debug;
    for (SearchTexts* texts : {&t.findLeft, &t.findRight}) {
        texts->nameSpace.sink = Sink::debug;
        texts->key.sink = Sink::debug;
        texts->addKey.role1.sink = Sink::debug;
        texts->addKey.role2.sink = Sink::debug;
    }
}

} // namespace merolt::association::nic
