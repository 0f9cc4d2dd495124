#include "associations/association.h"

#include "associations/paths.h"
#include "classes/object_memory.h"
#include "text/text.h"

#include "CmpiData.h"
#include "CmpiString.h"

#include <cstdint>

namespace merolt::association {

namespace {

constexpr const char* operationNames[] = {"associators", "associatorNames", "references", "referenceNames"};

/// Sets the two keys of an association path.
/// @param texts without patterns the keys go through the wrapper class. @param operation its name in the log.
/// @return the first status that is not OK.
CMPIStatus setKeys(const Family& family, const char* operation, CmpiObjectPath& path, const char* const names[2],
                   const CmpiObjectPath& left, const CmpiObjectPath& right, const AddKeyTexts& texts) {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    if (!texts.role1) {
        path.setKey(names[0], CmpiData(left));
        path.setKey(names[1], CmpiData(right));
        return status;
    }
    status = addReference(path, names[0], left);
    if (status.rc != CMPI_RC_OK) {
        log(texts.role1, {.token = family.token, .operation = operation, .number = status.rc});
        return status;
    }
    status = addReference(path, names[1], right);
    if (status.rc != CMPI_RC_OK) log(texts.role2, {.token = family.token, .operation = operation, .number = status.rc});
    return status;
}

void setRoles(const Family& family, CmpiInstance& instance, const CmpiObjectPath& left, const CmpiObjectPath& right) {
    instance.setProperty(family.left.name, CmpiData(left));
    instance.setProperty(family.right.name, CmpiData(right));
}

/// An instance of the association on a path, with both references.
CmpiInstance instanceWithRoles(const Family& family, const CmpiObjectPath& path, const CmpiObjectPath& left,
                               const CmpiObjectPath& right) {
    CmpiInstance instance(path);
    setRoles(family, instance, left, right);
    return instance;
}

void setFurther(const Family& family, CmpiInstance& instance) {
    instance.setProperty(family.further->name, CmpiData(family.further->value));
}

/// The paths of both ends of a row, nothing where an object has no record.
class Ends {
public:
    Ends(const Family& ofFamily, const char* inNameSpace) : family(ofFamily), nameSpace(inNameSpace) {}

    /// Makes them of a pair; a second row keeps the one that it shares with the first.
    void make(const Pair& pair) {
        const bool isFirst = pair.row == 0;
        if (isFirst || family.secondRowChanges == Side::left) left = pathOf(family.left.objects, pair.left);
        if (isFirst || family.secondRowChanges == Side::right) right = pathOf(family.right.objects, pair.right);
    }

    std::optional<CmpiObjectPath> left;
    std::optional<CmpiObjectPath> right;

private:
    std::optional<CmpiObjectPath> pathOf(const ObjectClass& objects, const Object& object) const {
        return objects.makePath(objects.name, nameSpace, object);
    }

    const Family& family;
    const char* nameSpace;
};

/// Walks the pairs of an enumeration.
/// @param deliver called with each pair and its two paths; a status that is not OK ends the walk and is returned.
template <class Deliver>
CmpiStatus enumerate(const Family& family, Enumeration enumeration, const EnumerationTexts& texts,
                     const CmpiObjectPath& cop, Deliver&& deliver) {
    Filling filling = {.token = family.token, .operation = nameOf(enumeration)};
    log(texts.open, filling);
    if (!family.hasAnything()) return CmpiStatus(CMPI_RC_OK);
    const char* nameSpace = "";
    CMPIStatus status = readNameSpace(cop, nameSpace);
    if (status.rc != CMPI_RC_OK && texts.nameSpace) {
        filling.number = status.rc;
        log(texts.nameSpace, filling);
        return status;
    }
    status = {CMPI_RC_OK, nullptr};
    Ends ends(family, nameSpace);
    family.matching.forEachPair(enumeration, [&](const Pair& pair) {
        ends.make(pair);
        if (ends.left && ends.right) status = deliver(pair, *ends.left, *ends.right);
        return status.rc == CMPI_RC_OK;
    });
    if (status.rc == CMPI_RC_OK) log(texts.close, filling);
    return status;
}

/// The text of a key that the wrapper class reads, null for a null value. Throws CmpiStatus if there is none, or if it
/// is no string.
const char* readThroughWrapper(const CmpiObjectPath& source, const char* name) {
    const CmpiData key = source.getKey(name);
    const CmpiString text = key;
    return key.isNullValue() ? nullptr : text.charPtr();
}

/// One side of an association as a search sees it.
struct Direction {
    const char* name; ///< in the log
    const Search& search;
    const SearchTexts& texts;
    const Role& far;
    bool farIsLeft;
};

Direction toLeft(const Family& family) {
    return {"findMatchedRole1", family.matching.findLeft, family.texts.findLeft, family.left, true};
}
Direction toRight(const Family& family) {
    return {"findMatchedRole2", family.matching.findRight, family.texts.findRight, family.right, false};
}

/// Reads the keys that the search goes by. @return false if one cannot be used; status is then the search's result.
bool readKeys(const Family& family, const Direction& direction, const CmpiObjectPath& path, Source& source,
              CMPIStatus& status) {
    CMPIType firstType = CMPI_null;
    for (std::size_t index = 0; index < maxSourceKeys && direction.search.keys[index].name; ++index) {
        const SourceKey& key = direction.search.keys[index];
        if (!direction.texts.key) {
            source.keys[index] = readThroughWrapper(path, key.name);
            continue;
        }
        const RequestKey read = readKey(path, key.name);
        status = read.status;
        if (index == 0) firstType = read.type;
        const CMPIType tested = key.test == KeyTest::firstKeyIsString ? firstType : read.type;
        const bool fits = status.rc == CMPI_RC_OK && (key.test == KeyTest::none || tested == CMPI_string);
        if (!fits) {
            log(key.error ? key.error : direction.texts.key,
                {.token = family.token, .operation = direction.name, .key = key.name, .number = status.rc});
            return false;
        }
        source.keys[index] = read.isText() ? read.text : nullptr;
    }
    return true;
}

/// The association between a source and one object that was found.
class Answer {
public:
    Answer(const Family& ofFamily, const Direction& inDirection, const CmpiObjectPath& ofSource,
           const char* inNameSpace)
        : family(ofFamily), direction(inDirection), source(ofSource), nameSpace(inNameSpace) {}

    /// Delivers what the request wants of the object. @return a status that is not OK ends the search.
    CMPIStatus deliver(CmpiResult& result, const Request& request, const Object& object) const {
        const ObjectClass& far = direction.far.objects;
        CMPIStatus status = {CMPI_RC_OK, nullptr};
        if (request.wanted == FUNC_ASSOC) {
            const auto instance = far.makeInstance(far.name, nameSpace, request.properties, object);
            if (instance) result.returnData(*instance);
        } else if (request.wanted == FUNC_ASSOCNAME) {
            const auto path = far.makePath(far.name, nameSpace, object);
            if (path) result.returnData(*path);
        } else if (request.wanted == FUNC_REF) {
            const auto path = far.makePath(far.name, nameSpace, object);
            if (path) deliverReference(result, *path);
        } else if (request.wanted == FUNC_REFNAME) {
            const MakePath makePath = direction.search.referenceNamePath;
            const auto path = (makePath ? makePath : far.makePath)(far.name, nameSpace, object);
            if (path) status = deliverReferenceName(result, *path);
        }
        return status;
    }

private:
    const CmpiObjectPath& left(const CmpiObjectPath& far, const CmpiObjectPath& near) const {
        return direction.farIsLeft ? far : near;
    }
    const CmpiObjectPath& right(const CmpiObjectPath& far, const CmpiObjectPath& near) const {
        return direction.farIsLeft ? near : far;
    }

    void deliverReference(CmpiResult& result, const CmpiObjectPath& far) const {
        const ClonedPath near(source);
        CmpiInstance instance =
            instanceWithRoles(family, CmpiObjectPath(nameSpace, family.className), left(far, near), right(far, near));
        if (family.further) setFurther(family, instance);
        result.returnData(instance);
    }

    CMPIStatus deliverReferenceName(CmpiResult& result, const CmpiObjectPath& far) const {
        const ClonedPath near(source);
        CmpiObjectPath path(nameSpace, family.className);
        const char* const roles[] = {family.left.name, family.right.name};
        const char* const* keys = family.referenceNameKeys.chosen();
        const CMPIStatus status = setKeys(family, direction.name, path, keys ? keys : roles, left(far, near),
                                          right(far, near), direction.texts.addKey);
        if (status.rc == CMPI_RC_OK) result.returnData(path);
        return status;
    }

    const Family& family;
    const Direction& direction;
    const CmpiObjectPath& source;
    const char* nameSpace;
};

/// findMatchedRole1InstancesOrReferences and findMatchedRole2InstancesOrReferences, by direction.
CmpiStatus findMatched(const Family& family, const Direction& direction, CmpiResult& result, const CmpiObjectPath& path,
                       const Request& request) {
    log(direction.texts.open, {.token = family.token, .operation = direction.name, .number = request.wanted});
    if (!family.hasAnything()) return CmpiStatus(CMPI_RC_OK);
    const char* nameSpace = "";
    CMPIStatus status = readNameSpace(path, nameSpace);
    if (status.rc != CMPI_RC_OK && direction.texts.nameSpace) {
        log(direction.texts.nameSpace, {.token = family.token, .operation = direction.name, .number = status.rc});
        return status;
    }
    status = {CMPI_RC_OK, nullptr};
    Source source;
    source.wanted = request.wanted;
    if (!readKeys(family, direction, path, source, status)) return status;
    const Answer answer(family, direction, path, nameSpace);
    direction.search.find(source, [&](const Object& object) {
        const ObjectMemory memory;
        status = answer.deliver(result, request, object);
        if (status.rc == CMPI_RC_OK) memory.giveBack();
        return status.rc == CMPI_RC_OK;
    });
    return status;
}

bool isOf(const Role& role, const CmpiObjectPath& source) {
    if (source.classPathIsA(role.objects.name)) return true;
    if (!role.aliases) return false;
    for (Aliases alias = role.aliases; *alias; ++alias) {
        if (source.classPathIsA(*alias)) return true;
    }
    return false;
}

bool wantsReferences(const Request& request) { return request.wanted == FUNC_REF || request.wanted == FUNC_REFNAME; }

/// Whether the request's filters let a search from the near to the far side through.
bool fitsFilters(const Family& family, const Request& request, const CmpiObjectPath& source, const Role& near,
                 const Role& far) {
    if (family.filters == Filters::ignored) return true;
    if (wantsReferences(request)) return roleFilterMatches(request.role, near.name);
    const CmpiString nameSpace = source.getNameSpace();
    return classFilterMatches(request.resultClass, textOf(nameSpace), far.objects.name) &&
           roleFilterMatches(request.role, near.name) && roleFilterMatches(request.resultRole, far.name);
}

/// Whether the association itself is of the class that the references are wanted of.
bool fitsResultClass(const Family& family, const Request& request, const CmpiObjectPath& source) {
    if (family.filters == Filters::ignored || !wantsReferences(request)) return true;
    const CmpiString nameSpace = source.getNameSpace();
    return classFilterMatches(request.resultClass, textOf(nameSpace), family.className);
}

/// How the lines of getInstance name family and operation.
Filling ofGetInstance(const Family& family, int number = 0) {
    const char* token = family.texts.getInstance.token;
    return {.token = token ? token : family.token, .operation = "getInstance", .number = number};
}

/// The class of a path to get, and, in families that have a text for it, first its namespace.
CMPIStatus readClass(const Family& family, const CmpiObjectPath& cop, const char*& className) {
    const GetInstanceTexts& texts = family.texts.getInstance;
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    if (texts.nameSpace) {
        const char* nameSpace = "";
        status = readNameSpace(cop, nameSpace);
        if (status.rc != CMPI_RC_OK) {
            log(texts.nameSpace, ofGetInstance(family, status.rc));
            return status;
        }
    }
    status = readClassName(cop, className);
    if (status.rc != CMPI_RC_OK) log(texts.className, ofGetInstance(family, status.rc));
    return status;
}

/// The reference of a path to get. @return null if there is none that can be used: status is then the request's
/// result, a success if only the type is wrong, so that the client sees an empty answer.
CMPIObjectPath* readEnd(const Family& family, const CmpiObjectPath& cop, const Role& role, const Text& unread,
                        const Text& wrongType, CMPIStatus& status) {
    const ReferenceKey key = readReference(cop, role.name);
    status = key.status;
    if (status.rc != CMPI_RC_OK) {
        log(unread, ofGetInstance(family, status.rc));
    } else if (!key.isReference()) {
        log(wrongType, ofGetInstance(family, key.type));
    }
    return key.object;
}

/// The number by which support knows a class name that was refused: its address, cut to 32 bits.
int numberOf(const char* className) { return static_cast<int>(reinterpret_cast<std::uintptr_t>(className)); }

/// Throws 7, unless the family logs the class name and that cannot be read.
CmpiStatus refuse(const Family& family, const CmpiObjectPath& source, const char* operation) {
    const RequestTexts& texts = family.texts.requests;
    if (texts.foreignClass) {
        const char* className = "";
        const CMPIStatus status = readClassName(source, className);
        const Filling filling = {.token = family.token, .operation = operation, .number = status.rc};
        if (status.rc != CMPI_RC_OK) {
            log(texts.className, filling);
            return status;
        }
        log(texts.foreignClass, {.token = family.token, .operation = operation, .number = numberOf(className)});
    }
    const CmpiString className = source.getClassName();
    throw CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED, textOf(className));
}

} // namespace

bool Source::equals(std::size_t key, const char* text) const {
    return keys[key] && equalsIgnoringCase(keys[key], text);
}

void FreshLists::read() const {
    for (const ClassList* list : {first, second}) {
        if (list) list->clear();
    }
    for (const ClassList* list : {first, second}) {
        if (list) list->build();
    }
}

CmpiStatus enumInstanceNames(const Family& family, CmpiResult& result, const CmpiObjectPath& cop) {
    if (family.own) return family.own->enumInstanceNames(result, cop);
    const EnumerationTexts& texts = family.texts.names;
    const char* const roles[] = {family.left.name, family.right.name};
    std::optional<ClonedPath> path;
    return enumerate(family, Enumeration::names, texts, cop,
                     [&](const Pair& pair, const CmpiObjectPath& left, const CmpiObjectPath& right) {
                         if (pair.row == 0) path.emplace(cop);
                         const CMPIStatus status =
                             setKeys(family, nameOf(Enumeration::names), path->get(), roles, left, right,
                                     pair.row == 0 ? texts.addKey : texts.addKeyOfSecondRow);
                         if (status.rc == CMPI_RC_OK) result.returnData(path->get());
                         return status;
                     });
}

CmpiStatus enumInstances(const Family& family, CmpiResult& result, const CmpiObjectPath& cop) {
    if (family.own) return family.own->enumInstances(result, cop);
    std::optional<ClonedPath> path;
    std::optional<CmpiInstance> instance;
    return enumerate(family, Enumeration::instances, family.texts.instances, cop,
                     [&](const Pair& pair, const CmpiObjectPath& left, const CmpiObjectPath& right) {
                         if (pair.row == 0) instance.emplace(path.emplace(cop));
                         setRoles(family, *instance, left, right);
                         if (family.further && family.further->inEnumeration) setFurther(family, *instance);
                         result.returnData(*instance);
                         return CMPIStatus{CMPI_RC_OK, nullptr};
                     });
}

CmpiStatus getInstance(const Family& family, const CmpiContext& context, CmpiResult& result,
                       const CmpiObjectPath& cop) {
    if (family.own) return family.own->getInstance(context, result, cop);
    const GetInstanceTexts& texts = family.texts.getInstance;
    log(texts.open, ofGetInstance(family));
    const char* className = "";
    CMPIStatus status = readClass(family, cop, className);
    if (status.rc != CMPI_RC_OK) return status;
    if (equalsIgnoringCase(className, family.className)) {
        const ClonedPath path(cop);
        CMPIObjectPath* leftReference = readEnd(family, cop, family.left, texts.key1, texts.key1Type, status);
        if (!leftReference) return status;
        CMPIObjectPath* rightReference = readEnd(family, cop, family.right, texts.key2, texts.key2Type, status);
        if (!rightReference) return status;
        const CmpiObjectPath left(leftReference);
        const CmpiObjectPath right(rightReference);
        family.left.test()(context, result, left, nullptr, false);
        family.right.test()(context, result, right, nullptr, false);
        result.returnData(instanceWithRoles(family, path, left, right));
    }
    log(texts.close, ofGetInstance(family));
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus answer(const Family& family, CmpiResult& result, const CmpiObjectPath& source, const Request& request) {
    if (family.own) return family.own->answer(result, source, request);
    const char* operation = operationNames[request.wanted];
    log(family.texts.requests.open[request.wanted], {.token = family.token, .operation = operation});
    // Before the source's class is looked at, so that a request that wants other associations is not refused for it.
    if (!fitsResultClass(family, request, source)) return CmpiStatus(CMPI_RC_OK);
    if (isOf(family.left, source)) {
        if (!fitsFilters(family, request, source, family.left, family.right)) return CmpiStatus(CMPI_RC_OK);
        return findMatched(family, toRight(family), result, source, request);
    }
    if (isOf(family.right, source)) {
        if (!fitsFilters(family, request, source, family.right, family.left)) return CmpiStatus(CMPI_RC_OK);
        return findMatched(family, toLeft(family), result, source, request);
    }
    return refuse(family, source, operation);
}

} // namespace merolt::association
