// Association paths: copies of a request's path, and the references in them.
#pragma once

#include "CmpiObjectPath.h"
#include "CmpiStatus.h"
#include "CmpiString.h"
#include "cmpift.h"

namespace merolt::association {

/// A path of our own with what the original holds. Released at the end of the scope; what was handed to the server
/// before is the server's copy. Throws CmpiStatus if the server cannot clone.
class ClonedPath {
public:
    explicit ClonedPath(const CmpiObjectPath& original);
    ~ClonedPath();
    ClonedPath(const ClonedPath&) = delete;
    ClonedPath& operator=(const ClonedPath&) = delete;

    operator const CmpiObjectPath&() const { return path; }
    CmpiObjectPath& get() { return path; }

private:
    CmpiObjectPath path;
};

/// Adds a reference to a path through the server's table. @return the server's status.
CMPIStatus addReference(CmpiObjectPath& path, const char* role, const CmpiObjectPath& object);

/// A reference as a request brought it.
struct ReferenceKey {
    CMPIStatus status;
    CMPIType type;
    CMPIObjectPath* object; ///< null unless isReference()
    bool isReference() const { return object != nullptr; }
};
ReferenceKey readReference(const CmpiObjectPath& path, const char* role);

/// The text of a string that the server made; empty where it made none. It lives as long as the string.
const char* textOf(const CmpiString& string);

/// True for no filter, else whether a path of the class is of the filter's class or of one below it.
bool classFilterMatches(const char* filterClass, const char* nameSpace, const char* className);
/// True for no filter, else whether both are equal in any letter case.
bool roleFilterMatches(const char* role, const char* actualRole);

} // namespace merolt::association
