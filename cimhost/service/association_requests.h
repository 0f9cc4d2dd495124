// The operations that follow associations: from an object or from a class; and from an object, with several answers.
#pragma once

namespace cimhost {

struct Call;

/// Each appends what stands inside IRETURNVALUE. Throws CimFailure.
void associators(const Call& call);
void associatorNames(const Call& call);
void references(const Call& call);
void referenceNames(const Call& call);

/// Each appends what stands inside IMETHODRESPONSE. Throws CimFailure.
void openAssociatorInstances(const Call& call);
void openAssociatorInstancePaths(const Call& call);
void openReferenceInstances(const Call& call);
void openReferenceInstancePaths(const Call& call);

} // namespace cimhost
