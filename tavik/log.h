// What the library writes to standard error: the log, which TAVIK_Initialize switches on, and reports, which always
// appear. Whole lines that begin with "tavik: ". Texts can be what clients sent: control characters appear as \x1B.
#pragma once

#include <string>

namespace tavik {

void setLogging(bool on);
bool isLogging();

/** For the log: nothing appears unless it is on. */
void log(const std::string& text);

/** For what an administrator must see: a source that cannot be read, a caller that breaks the rules. */
void report(const std::string& text);

} // namespace tavik
