// Which Ethernet elements conform to which registered profile. The one association with three classes at one end, and
// the one across namespaces: profiles live in the interop namespace, elements in the implementation namespace, whatever
// namespace a request names. It has its own requests, since class names are compared as texts: a subclass is foreign
// here.
#include "associations/ethernet/walks.h"
#include "associations/modules.h"
#include "associations/paths.h"
#include "classes/ethernet/registered_profile.h"
#include "configuration/nic_properties.h"
#include "log/log.h"
#include "text/text.h"

#include "CmpiData.h"
#include "CmpiString.h"

#include <cstdlib>

namespace merolt::ethernet {

using namespace association;

namespace {

#define FAMILY "Assoc_ElementConformsToRegisteredProfile"

constexpr const char* associationClass = "Merolt_NIC_ElementConformsToRegisteredProfile";
constexpr const char* profileClass = "Merolt_NIC_RegisteredProfile";
constexpr const char* role1 = "ConformantStandard";
constexpr const char* role2 = "ManagedElement";

/// Elements of one class all conform to one profile, which enumerations know by its name and searches by its number.
struct Conformance {
    std::uint32_t instanceNumber;
    const char* profileName;
    ObjectClass elements;
    const char* key; ///< by which a source of the class is found
    nic::KeyText identifier;
};

constexpr Conformance conformances[] = {
    {1, "EthernetPort Profile", nic::ethernetPort, "DeviceID", nic::macTextOf},
    {2, "Host LAN Network Port Profile", nic::networkPort, "DeviceID", nic::networkPortIDOf},
    {3, "IP Interface Profile", nic::ipProtocolEndPoint, "Name", nic::macTextOf},
};

const Conformance* conformanceOfProfile(const char* elementName) {
    for (const Conformance& conformance : conformances)
        if (equalsIgnoringCase(elementName, conformance.profileName)) return &conformance;
    return nullptr;
}

const Conformance* conformanceOfNumber(unsigned long number) {
    for (const Conformance& conformance : conformances)
        if (number == conformance.instanceNumber) return &conformance;
    return nullptr;
}

const Conformance* conformanceOfClass(const char* className) {
    for (const Conformance& conformance : conformances)
        if (equalsIgnoringCase(className, conformance.elements.name)) return &conformance;
    return nullptr;
}

CmpiObjectPath profilePath(const RegisteredProfileEntry* profile) {
    return makePath_RegisteredProfile(profileClass, Merolt_NIC_Properties::instance().interopNamespace, profile);
}

CmpiObjectPath elementPath(const Conformance& conformance, const Object& port) {
    const char* nameSpace = Merolt_NIC_Properties::instance().implementationNamespace;
    return conformance.elements.makePath(conformance.elements.name, nameSpace, port).value();
}

/// Calls the visitor with each profile and each port, until it returns false.
template <class Visitor>
void forEachProfileAndPort(Visitor&& visit) {
    bool goesOn = true;
    for (const RegisteredProfileEntry* profile = g_RegisteredProfileList; profile && goesOn; profile = profile->next)
        nic::eachPort({}, [&](const Object& port) { return goesOn = visit(profile, port); });
}

/// Adds one end to an association path. @return whether that worked; the text is logged if not.
bool add(CmpiObjectPath& path, const char* role, const CmpiObjectPath& end, const char* text, CMPIStatus& status) {
    status = addReference(path, role, end);
    if (status.rc != CMPI_RC_OK) DEBUG_LOG("%s", text);
    return status.rc == CMPI_RC_OK;
}

/// What a search is asked for, and where its results go.
struct Wanted {
    ftype type;
    const char** properties;
    CmpiResult& result;
    const CmpiObjectPath& source;
    const char* nameSpace; ///< of the source, for the association alone
};

/// Texts of the failed additions of a search.
struct AddTexts {
    const char* role1;
    const char* role2;
};
constexpr AddTexts findRole1Texts = {FAMILY ": Error addkey Role1 in findRole1\n",
                                     FAMILY ": Error addkey Role2 in findRole1\n"};
constexpr AddTexts findRole2Texts = {FAMILY ": Error addkey Role1 in findRole2\n",
                                     FAMILY ": Error addkey Role2 in findRole2\n"};

/// Delivers an association between a profile and an element, as instance or as path.
CMPIStatus deliverAssociation(const Wanted& wanted, const CmpiObjectPath& profile, const CmpiObjectPath& element,
                              const AddTexts& texts) {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CmpiObjectPath path(wanted.nameSpace, associationClass);
    if (wanted.type == FUNC_REF) {
        CmpiInstance instance(path);
        instance.setProperty(role1, CmpiData(profile));
        instance.setProperty(role2, CmpiData(element));
        wanted.result.returnData(instance);
        return status;
    }
    if (!add(path, role1, profile, texts.role1, status)) return status;
    if (add(path, role2, element, texts.role2, status)) wanted.result.returnData(path);
    return status;
}

CMPIStatus deliverProfile(const Wanted& wanted, const RegisteredProfileEntry* profile) {
    const char* nameSpace = Merolt_NIC_Properties::instance().interopNamespace;
    if (wanted.type == FUNC_ASSOC) {
        wanted.result.returnData(makeInstance_RegisteredProfile(profileClass, nameSpace, wanted.properties, profile));
    } else if (wanted.type == FUNC_ASSOCNAME) {
        wanted.result.returnData(profilePath(profile));
    } else {
        const ClonedPath element(wanted.source);
        return deliverAssociation(wanted, profilePath(profile), element, findRole1Texts);
    }
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus deliverElement(const Wanted& wanted, const Conformance& conformance, const Object& port) {
    const char* nameSpace = Merolt_NIC_Properties::instance().implementationNamespace;
    const ObjectClass& elements = conformance.elements;
    if (wanted.type == FUNC_ASSOC) {
        wanted.result.returnData(elements.makeInstance(elements.name, nameSpace, wanted.properties, port).value());
    } else if (wanted.type == FUNC_ASSOCNAME) {
        wanted.result.returnData(elementPath(conformance, port));
    } else {
        const ClonedPath profile(wanted.source);
        return deliverAssociation(wanted, profile, elementPath(conformance, port), findRole2Texts);
    }
    return {CMPI_RC_OK, nullptr};
}

/// Reads namespace and class name of a source.
CMPIStatus readSource(const CmpiObjectPath& source, const char*& nameSpace, const char*& className) {
    CMPIStatus status = readNameSpace(source, nameSpace);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG(FAMILY ": Error getting namespace\n");
        return status;
    }
    status = readClassName(source, className);
    if (status.rc != CMPI_RC_OK) ERROR_LOG(FAMILY ": Error getting ClassName");
    return status;
}

/// From an element to its profile.
CmpiStatus findMatchedRole1InstancesOrReferences(CmpiResult& result, const CmpiObjectPath& source,
                                                 const char** properties, ftype type) {
    DEBUG_LOG(FAMILY ":findMatchedRole1InstancesOrReferences()");
    const char* nameSpace = "";
    const char* className = "";
    CMPIStatus status = readSource(source, nameSpace, className);
    if (status.rc != CMPI_RC_OK) return status;
    const Conformance* conformance = conformanceOfClass(className);
    if (!conformance) return status;
    const RequestKey key = readKey(source, conformance->key);
    if (!key.isText()) {
        ERROR_LOG(FAMILY ": Error getting %s key in findMatchedRole1\n", conformance->key);
        return key.status;
    }
    DEBUG_LOG(FAMILY ":findMatchedRole1InstancesOrReferences() identifier=%s", key.text);
    const Wanted wanted = {type, properties, result, source, nameSpace};
    nic::eachPort({}, [&](const Object& port) {
        if (!equalsIgnoringCase(conformance->identifier(port), key.text)) return true;
        for (const RegisteredProfileEntry* profile = g_RegisteredProfileList; profile; profile = profile->next) {
            if (profile->instanceNumber != conformance->instanceNumber) continue;
            status = deliverProfile(wanted, profile);
            if (status.rc != CMPI_RC_OK) return false;
        }
        return true;
    });
    return status;
}

/// From a profile to its elements.
CmpiStatus findMatchedRole2InstancesOrReferences(CmpiResult& result, const CmpiObjectPath& source,
                                                 const char** properties, ftype type) {
    const char* nameSpace = "";
    CMPIStatus status = readNameSpace(source, nameSpace);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG(FAMILY ": Error getting namespace\n");
        return status;
    }
    const RequestKey key = readKey(source, "InstanceID");
    if (!key.isText()) {
        ERROR_LOG(FAMILY ": Error getting InstanceID key in findMatchedRole2\n");
        ERROR_LOG(FAMILY ": status.rc = %d, keyData.type=%u", key.status.rc, key.type);
        return key.status;
    }
    const unsigned long number = std::strtoul(key.text, nullptr, 10);
    const Conformance* conformance = conformanceOfNumber(number);
    if (!conformance) return status;
    const Wanted wanted = {type, properties, result, source, nameSpace};
    forEachProfileAndPort([&](const RegisteredProfileEntry* profile, const Object& port) {
        if (profile->instanceNumber != number) return true;
        status = deliverElement(wanted, *conformance, port);
        return status.rc == CMPI_RC_OK;
    });
    return status;
}

bool anyElementClassMatches(const char* filterClass) {
    const char* nameSpace = Merolt_NIC_Properties::instance().implementationNamespace;
    for (const ObjectClass& elements : {nic::ethernetPort, nic::ipProtocolEndPoint, nic::networkPort})
        if (classFilterMatches(filterClass, nameSpace, elements.name)) return true;
    return false;
}

[[noreturn]] void refuse(const char* className) { throw CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED, className); }

CMPIStatus readSourceClass(const CmpiObjectPath& source, const char*& className) {
    const CMPIStatus status = readClassName(source, className);
    if (status.rc != CMPI_RC_OK) ERROR_LOG(FAMILY ": Error getting ClassName");
    return status;
}

CmpiStatus answerAssociators(CmpiResult& result, const CmpiObjectPath& source, const Request& request) {
    const char* className = "";
    const CMPIStatus status = readSourceClass(source, className);
    if (status.rc != CMPI_RC_OK) return status;
    if (equalsIgnoringCase(className, profileClass)) {
        if (!anyElementClassMatches(request.resultClass)) return CmpiStatus(CMPI_RC_OK);
        if (!roleFilterMatches(request.role, role1) || !roleFilterMatches(request.resultRole, role2))
            return CmpiStatus(CMPI_RC_OK);
        return findMatchedRole2InstancesOrReferences(result, source, request.properties, request.wanted);
    }
    if (!conformanceOfClass(className)) refuse(className);
    const char* nameSpace = Merolt_NIC_Properties::instance().implementationNamespace;
    const bool fits = classFilterMatches(request.resultClass, nameSpace, profileClass) &&
                      roleFilterMatches(request.role, role2) && roleFilterMatches(request.resultRole, role1);
    if (!fits) return CmpiStatus(CMPI_RC_OK);
    return findMatchedRole1InstancesOrReferences(result, source, request.properties, request.wanted);
}

CmpiStatus answerReferences(CmpiResult& result, const CmpiObjectPath& source, const Request& request) {
    const char* className = "";
    const CMPIStatus status = readSourceClass(source, className);
    if (status.rc != CMPI_RC_OK) return status;
    const CmpiString nameSpace = source.getNameSpace();
    if (!classFilterMatches(request.resultClass, textOf(nameSpace), associationClass)) return CmpiStatus(CMPI_RC_OK);
    if (equalsIgnoringCase(className, profileClass)) {
        if (!roleFilterMatches(request.role, role1)) return CmpiStatus(CMPI_RC_OK);
        return findMatchedRole2InstancesOrReferences(result, source, request.properties, request.wanted);
    }
    if (!conformanceOfClass(className)) refuse(className);
    if (!roleFilterMatches(request.role, role2)) return CmpiStatus(CMPI_RC_OK);
    return findMatchedRole1InstancesOrReferences(result, source, request.properties, request.wanted);
}

/// Tests an element of a known class; one of any other class is taken as it is.
void verifyElement(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& element) {
    const char* className = "";
    if (readClassName(element, className).rc != CMPI_RC_OK) return;
    const Conformance* conformance = conformanceOfClass(className);
    if (conformance) conformance->elements.getInstance(context, result, element, nullptr, false);
}

CmpiStatus enumInstanceNames(CmpiResult& result, const CmpiObjectPath& cop) {
    DEBUG_LOG(FAMILY ": enumInstanceNames_ElementConformsToRegisteredProfile was called\n");
    const char* nameSpace = "";
    CMPIStatus status = readNameSpace(cop, nameSpace);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG(FAMILY ": Error getting namespace\n");
        return status;
    }
    forEachProfileAndPort([&](const RegisteredProfileEntry* profile, const Object& port) {
        ClonedPath path(cop);
        if (!add(path.get(), role1, profilePath(profile), FAMILY ": Error addkey Role1 in enumInstanceNames\n", status))
            return false;
        const Conformance* conformance = conformanceOfProfile(profile->elementName.text());
        if (!conformance) return true;
        const CmpiObjectPath element = elementPath(*conformance, port);
        if (!add(path.get(), role2, element, FAMILY ": Error addkey Role2 in enumInstanceNames\n", status))
            return false;
        result.returnData(path.get());
        return true;
    });
    return status;
}

CmpiStatus enumInstances(CmpiResult& result, const CmpiObjectPath& cop) {
    DEBUG_LOG(FAMILY ": enumInstances_ElementConformsToRegisteredProfile was called\n");
    const char* nameSpace = "";
    const CMPIStatus status = readNameSpace(cop, nameSpace);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG("Assoc_RegisteredProfile_EthernetPor: Error getting namespace\n");
        return status;
    }
    forEachProfileAndPort([&](const RegisteredProfileEntry* profile, const Object& port) {
        const ClonedPath path(cop);
        CmpiInstance instance(path);
        // Also of profiles that give no row: those who read the log see each combination.
        instance.setProperty(role1, CmpiData(profilePath(profile)));
        const Conformance* conformance = conformanceOfProfile(profile->elementName.text());
        if (!conformance) return true;
        instance.setProperty(role2, CmpiData(elementPath(*conformance, port)));
        result.returnData(instance);
        return true;
    });
    return status;
}

CmpiStatus getInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop) {
    DEBUG_LOG(FAMILY ": getInstance was called\n");
    const char* className = "";
    CMPIStatus status = readClassName(cop, className);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG("Assoc_RegisteredProfile_EthernetPor: Error getting ClassName\n");
        return status;
    }
    const char* nameSpace = "";
    status = readNameSpace(cop, nameSpace);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG("Assoc_RegisteredProfile_EthernetPor: Error getting namespace\n");
        return status;
    }
    if (!equalsIgnoringCase(className, associationClass)) return CmpiStatus(CMPI_RC_OK);
    const ReferenceKey profileKey = readReference(cop, role1);
    if (!profileKey.isReference()) return CmpiStatus(CMPI_RC_OK);
    const ReferenceKey elementKey = readReference(cop, role2);
    if (!elementKey.isReference()) return CmpiStatus(CMPI_RC_OK);
    const CmpiObjectPath profile(profileKey.object);
    const CmpiObjectPath element(elementKey.object);
    getInstance_RegisteredProfile(context, result, profile, nullptr, false);
    verifyElement(context, result, element);
    const ClonedPath path(cop);
    CmpiInstance instance(path);
    instance.setProperty(role1, CmpiData(profile));
    instance.setProperty(role2, CmpiData(element));
    result.returnData(instance);
    return CmpiStatus(CMPI_RC_OK);
}

// By ftype.
constexpr const char* openTexts[] = {FAMILY ": associators was called\n", FAMILY ": associatorNames was called\n",
                                     FAMILY ": references was called\n",
                                     FAMILY ": referenceNames_ElementConformsToRegisteredProfile was called\n"};

CmpiStatus answer(CmpiResult& result, const CmpiObjectPath& source, const Request& request) {
    DEBUG_LOG("%s", openTexts[request.wanted]);
    const bool wantsReferences = request.wanted == FUNC_REF || request.wanted == FUNC_REFNAME;
    return wantsReferences ? answerReferences(result, source, request) : answerAssociators(result, source, request);
}

constexpr OwnRequests requests = {enumInstanceNames, enumInstances, getInstance, answer};

// The ports are the right end; these are the other elements.
constexpr FurtherSource otherElements[] = {
    {"Merolt_NIC_IPProtocolEndpoint", {.lookUp = 78}},
    {"Merolt_NIC_NetworkPort", {.lookUp = 85}},
};

} // namespace

constexpr Family elementConformsToRegisteredProfile = {
    .token = FAMILY,
    .className = associationClass,
    .left = {.name = role1, .objects = {.name = profileClass}},
    .right = {role2, nic::ethernetPort},
    .furtherSources = otherElements,
    .own = &requests,
    .places = {.row = 66, .getInstanceRow = 64, .left = {93}, .right = {69}},
};

} // namespace merolt::ethernet
