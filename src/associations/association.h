// The association pattern. An association stores nothing: each request derives its instances from the class lists.
// An association is a Family: two roles, which pairs exist, how a source finds the far side, its log texts, and its
// places in the sequences that requests walk. The seven request operations stand here once.
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
#include <span>

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
    /// Whether references and referenceNames start from an object of a subclass, too.
    bool takesSubclasses = false;
    /// The base class that referenceNames knows from this end, where it differs from the family's.
    const char* referenceNamesBaseClass = nullptr;

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

/// Which pairs there are, and how a source of one side finds the other.
struct Matching {
    void (*forEachPair)(Enumeration enumeration, const PairVisitor& visit);
    Search findLeft;  ///< from a source of the right class
    Search findRight; ///< from a source of the left class
};

/// Lists that are read anew before a request, so that it shows how things are now.
struct FreshLists {
    const ClassList* first = nullptr;
    const ClassList* second = nullptr;
    bool forEnumerations = false; ///< for enumerations and getInstance, too

    void read() const;
};

/// Places in the sequences that requests walk are counted from 1. What comes new has none: it stands behind all that
/// have one.
constexpr int behindAll = 0;
constexpr int nowhere = -1;

/// How a source class leads to the association.
struct SourcePlaces {
    int lookUp = behindAll; ///< where a request that names no association comes to it
    int test = behindAll;   ///< where it is tested on the storage side; the Ethernet side goes by name alone
};

/// A source class beside those of the two ends.
struct FurtherSource {
    const char* className;
    SourcePlaces places;
};

struct Places {
    int row = behindAll; ///< among all classes and associations, in enumerations
    int getInstanceRow = row;
    SourcePlaces left = {};
    SourcePlaces right = {};
};

struct Family;
struct Request;

/// Request functions in the place of the engine's.
struct OwnRequests {
    CmpiStatus (*enumInstanceNames)(CmpiResult& result, const CmpiObjectPath& cop);
    CmpiStatus (*enumInstances)(CmpiResult& result, const CmpiObjectPath& cop);
    CmpiStatus (*getInstance)(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop);
    CmpiStatus (*answer)(CmpiResult& result, const CmpiObjectPath& source, const Request& request);
};

struct Family {
    const char* token;               ///< the family's name in log texts
    const char* className;           ///< of the association
    const char* baseClass = nullptr; ///< its CIM parent, which references may name instead; null: they may not
    Role left;
    Role right;
    Matching matching = {};
    Filters filters = Filters::ignored;
    Texts texts = {};
    const FurtherProperty* further = nullptr;
    /// Names of the two keys in referenceNames; null: the roles.
    TwoForms<const char* const*> referenceNameKeys = {};
    /// While this is false, enumerations and searches return at once, whatever the request is; null: always true.
    bool (*isPopulated)() = nullptr;
    /// Where a record gives two rows: the end that is named anew for the second one. The other end and the
    /// association's own path or instance are made once and serve both, so an end's maker tells of itself in the log
    /// once a record.
    Side secondRowChanges = Side::left;
    /// There only while targets are discovered. Its right end is then a source of the chain that is walked last.
    bool needsTargets = false;
    FreshLists fresh = {};
    std::span<const FurtherSource> furtherSources = {};
    const OwnRequests* own = nullptr;
    Places places = {};

    bool hasAnything() const { return !isPopulated || isPopulated(); }
};

/// What a client asks of an association. Texts may be null.
struct Request {
    ftype wanted;
    const char* resultClass = nullptr;
    const char* role = nullptr;
    const char* resultRole = nullptr;
    const char** properties = nullptr;
};

CmpiStatus enumInstanceNames(const Family& family, CmpiResult& result, const CmpiObjectPath& cop);
CmpiStatus enumInstances(const Family& family, CmpiResult& result, const CmpiObjectPath& cop);

/// The association between the two ends that the path names. Only the existence of the ends is tested, not that they
/// belong together. Throws CmpiStatus 6 if one does not exist.
CmpiStatus getInstance(const Family& family, const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop);

/// The four association requests. Throws CmpiStatus 7 with the source's class name if that is of neither side.
CmpiStatus answer(const Family& family, CmpiResult& result, const CmpiObjectPath& source, const Request& request);

} // namespace merolt::association
