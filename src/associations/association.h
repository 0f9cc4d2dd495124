// The association pattern. An association stores nothing: each request derives its instances from the class lists.
// An association is a Family: two roles, which pairs exist, how a source finds the far side, and its log texts. The
// seven request operations stand here once.
#pragma once

#include "associations/object_class.h"
#include "associations/texts.h"
#include "configuration/answers.h"

#include "CmpiContext.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"

#include <array>
#include <functional>

namespace merolt::association {

/// What a search returns for each match.
enum ftype {
    FUNC_ASSOC = 0,     ///< instance of the far object
    FUNC_ASSOCNAME = 1, ///< path of the far object
    FUNC_REF = 2,       ///< instance of the association
    FUNC_REFNAME = 3    ///< path of the association
};

/// Which enumeration walks the pairs: single families log differently.
enum class Enumeration { names, instances };
constexpr const char* nameOf(Enumeration enumeration) {
    return enumeration == Enumeration::names ? "enumInstanceNames" : "enumInstances";
}

/// Returns false to end a walk.
using ObjectVisitor = std::function<bool(const Object&)>;

struct Pair {
    Object left;
    Object right;
    int row = 0; ///< 1 for the second row that one record gives
};
using PairVisitor = std::function<bool(const Pair&)>;

/// Classes that clients may name instead of a role's class; ends with null.
using Aliases = const char* const*;

struct Role {
    const char* name;
    ObjectClass objects;
    Aliases aliases = nullptr;
    /// How getInstance tests that the object exists; null: through the class itself.
    GetInstance existence = nullptr;

    GetInstance test() const { return existence ? existence : objects.getInstance; }
};

/// Whether a key of another type than string fails the read.
enum class KeyTest { none, isString, firstKeyIsString };

struct SourceKey {
    const char* name = nullptr;
    KeyTest test = KeyTest::none;
    Text error = {}; ///< instead of the family's text for keys
};

constexpr std::size_t maxSourceKeys = 4;

/// What a search goes by: the keys of the source, by their place in Search, and what the request wants.
struct Source {
    std::array<const char*, maxSourceKeys> keys{}; ///< null for a key that is no string
    ftype wanted = FUNC_ASSOC;

    /// The key's text, empty if it is no string.
    const char* text(std::size_t key) const { return keys[key] ? keys[key] : ""; }
    /// In any letter case. A key that is no string equals nothing.
    bool equals(std::size_t key, const char* text) const;
};

/// One direction of an association: from a source object to the objects of the far side.
struct Search {
    std::array<SourceKey, maxSourceKeys> keys{}; ///< read in this order, all before the first test
    void (*find)(const Source& source, const ObjectVisitor& visit) = nullptr;
    /// How referenceNames names the far object, where it differs from every other operation.
    MakePath referenceNamePath = nullptr;
};

/// A property that an association has beside its roles.
struct FurtherProperty {
    const char* name;
    CMPIUint16 value;
    bool inEnumeration; ///< whether enumInstances sets it; references always does
};

enum class Side { left, right };

/// Whether role, resultRole and resultClass of a request narrow the answer.
enum class Filters { ignored, applied };

struct Family {
    const char* token;     ///< the family's name in log texts
    const char* className; ///< of the association
    Role left;
    Role right;
    void (*forEachPair)(Enumeration enumeration, const PairVisitor& visit);
    Search findLeft;  ///< from a source of the right class
    Search findRight; ///< from a source of the left class
    Filters filters;
    const Texts& texts;
    const FurtherProperty* further = nullptr;
    /// Names of the two keys in referenceNames; null: the roles.
    TwoForms<const char* const*> referenceNameKeys = {};
    /// While this is false, enumerations and searches return at once, whatever the request is; null: always true.
    bool (*isPopulated)() = nullptr;
    /// Where a record gives two rows: the end that is named anew for the second one. The other end and the
    /// association's own path or instance are made once and serve both, so an end's maker tells of itself in the log
    /// once a record.
    Side secondRowChanges = Side::left;

    bool hasAnything() const { return !isPopulated || isPopulated(); }
};

CmpiStatus enumInstanceNames(const Family& family, CmpiResult& result, const CmpiObjectPath& cop);
CmpiStatus enumInstances(const Family& family, CmpiResult& result, const CmpiObjectPath& cop);

/// The association between the two ends that the path names. Only the existence of the ends is tested, not that they
/// belong together. Throws CmpiStatus 6 if one does not exist.
CmpiStatus getInstance(const Family& family, const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop);

/// What a client asks of an association. Texts may be null.
struct Request {
    ftype wanted;
    const char* resultClass = nullptr;
    const char* role = nullptr;
    const char* resultRole = nullptr;
    const char** properties = nullptr;
};

/// Throws CmpiStatus 7 with the source's class name if that is of neither side.
CmpiStatus answer(const Family& family, CmpiResult& result, const CmpiObjectPath& source, const Request& request);

} // namespace merolt::association

/// Declares the seven request functions of a family.
#define DECLARE_ASSOCIATION(X)                                                                                         \
    CmpiStatus enumInstanceNames_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop);       \
    CmpiStatus enumInstances_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,            \
                                 const char** properties);                                                             \
    CmpiStatus getInstance_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop);             \
    CmpiStatus associators_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& source,           \
                               const char* assocClass, const char* resultClass, const char* role,                      \
                               const char* resultRole, const char** properties);                                       \
    CmpiStatus associatorNames_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& source,       \
                                   const char* assocClass, const char* resultClass, const char* role,                  \
                                   const char* resultRole);                                                            \
    CmpiStatus references_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& source,            \
                              const char* resultClass, const char* role, const char** properties);                     \
    CmpiStatus referenceNames_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& source,        \
                                  const char* resultClass, const char* role);

/// Defines them over the family. Instances of an association know no property filter.
#define DEFINE_ASSOCIATION(X, family)                                                                                  \
    CmpiStatus enumInstanceNames_##X(const CmpiContext&, CmpiResult& result, const CmpiObjectPath& cop) {              \
        return enumInstanceNames(family, result, cop);                                                                 \
    }                                                                                                                  \
    CmpiStatus enumInstances_##X(const CmpiContext&, CmpiResult& result, const CmpiObjectPath& cop, const char**) {    \
        return enumInstances(family, result, cop);                                                                     \
    }                                                                                                                  \
    CmpiStatus getInstance_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop) {            \
        return getInstance(family, context, result, cop);                                                              \
    }                                                                                                                  \
    DEFINE_ASSOCIATION_REQUESTS(X, family)

#define DEFINE_ASSOCIATION_REQUESTS(X, family)                                                                         \
    CmpiStatus associators_##X(const CmpiContext&, CmpiResult& result, const CmpiObjectPath& source, const char*,      \
                               const char* resultClass, const char* role, const char* resultRole,                      \
                               const char** properties) {                                                              \
        return answer(family, result, source, {association::FUNC_ASSOC, resultClass, role, resultRole, properties});   \
    }                                                                                                                  \
    CmpiStatus associatorNames_##X(const CmpiContext&, CmpiResult& result, const CmpiObjectPath& source, const char*,  \
                                   const char* resultClass, const char* role, const char* resultRole) {                \
        return answer(family, result, source, {association::FUNC_ASSOCNAME, resultClass, role, resultRole});           \
    }                                                                                                                  \
    CmpiStatus references_##X(const CmpiContext&, CmpiResult& result, const CmpiObjectPath& source,                    \
                              const char* resultClass, const char* role, const char** properties) {                    \
        return answer(family, result, source, {association::FUNC_REF, resultClass, role, nullptr, properties});        \
    }                                                                                                                  \
    CmpiStatus referenceNames_##X(const CmpiContext&, CmpiResult& result, const CmpiObjectPath& source,                \
                                  const char* resultClass, const char* role) {                                         \
        return answer(family, result, source, {association::FUNC_REFNAME, resultClass, role});                         \
    }
