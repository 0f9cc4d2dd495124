// The four operations that follow associations, from an object or from a class.
#pragma once

namespace cimhost {

struct Call;

/// Each appends what stands inside IRETURNVALUE. Throws CimFailure.
void associators(const Call& call);
void associatorNames(const Call& call);
void references(const Call& call);
void referenceNames(const Call& call);

} // namespace cimhost
