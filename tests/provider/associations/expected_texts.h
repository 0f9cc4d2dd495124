// What each association writes to the log when it is asked and when a call of the server's tables fails. Log texts are
// part of what users rely on, odd spellings included.
#pragma once

#include "expected_families.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

enum class Sink { debug, error };

struct LogText {
    std::string text; ///< a trailing newline leaves an empty line in the log
    Sink sink = Sink::error;
};

/// Texts by slot:
///   names, instances, get       .open .close .namespace .classname .add1 .add2 .second1 .second2
///                               .key1 .type1 .key2 .type2 (get; numbers stand as %d)
///   left, right (the searches by what they yield)
///                               .open .namespace .classname .key.NAME .add1 .add2
///   associators, associatorNames, references, referenceNames (when called)
/// A slot that is absent writes nothing.
using Texts = std::map<std::string, LogText>;

const Texts& textsOf(const Family& family);

/// The slot's text with its number put in; nothing if the slot is absent.
std::vector<std::string> textAt(const Family& family, const std::string& slot, Sink sink, unsigned number = 0);

/// Keys whose type is tested, each with the key that its message names.
std::map<std::string, std::string> typeTestedKeys(const Family& family, const std::string& sourceClass,
                                                  bool sourceIsLeft);
