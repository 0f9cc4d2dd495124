// The part of a golden text that tells what an association writes to the log: on its way in and out, and when a call of
// the server's tables fails. Log texts are part of what users rely on, odd spellings included.
#include "golden_test.h"
#include "request_hooks.h"

#include "log/log.h"

namespace {

std::string line(const std::string& text) { return "  " + text + '\n'; }

std::string quoted(const std::string& message) {
    std::string text;
    for (const char character : message)
        text += character == '\n' ? std::string("\\n") : std::string(1, character);
    return '"' + text + '"';
}

bool has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

/// What associations write, without the lines that only one of them has.
bool isOfFamily(const std::string& message) {
    return has(message, "Assoc") && !has(message, "Merolt_CNA_Provider") && !has(message, ": Comparing ") &&
           !has(message, ":findMatchedRole1InstancesOrReferences()");
}

bool isError(const std::string& message) { return has(message, "Error") && message.find("Merolt_") != 0; }

} // namespace

/// What a request that succeeds writes of the association, in order.
std::string GoldenTest::messagesOf(const std::function<void()>& request) {
    merolt::gDebugLog = true;
    merolt::gErrorLog = true;
    takeMessages();
    request();
    std::string text;
    for (const std::string& message : takeMessages()) {
        if (isOfFamily(message)) text += (text.empty() ? "" : ", ") + quoted(message);
    }
    return text.empty() ? "nothing" : text;
}

/// The errors of a request that is made once with each log on, and the other off.
std::string GoldenTest::errorsOf(const std::function<void()>& request) {
    std::string text;
    for (const bool isDebug : {true, false}) {
        merolt::gDebugLog = isDebug;
        merolt::gErrorLog = !isDebug;
        takeMessages();
        request();
        for (const std::string& message : takeMessages()) {
            if (isError(message))
                text +=
                    (text.empty() ? "" : ", ") + std::string(isDebug ? "debug log " : "error log ") + quoted(message);
        }
    }
    merolt::gDebugLog = false;
    merolt::gErrorLog = false;
    return text.empty() ? "no error" : text;
}

std::string GoldenTest::failures(const std::function<Reply()>& request) {
    Reply reply;
    const std::string errors = errorsOf([&] { reply = request(); });
    return std::to_string(reply.rows.size()) + " rows, status " + std::to_string(reply.rc) +
           (reply.doneCount == 1 ? "" : ", not ended once") + "; " + errors;
}

/// Lets the first, the second, ... call of a kind fail in turn, until no more calls of that kind are made.
std::string GoldenTest::failingCalls(unsigned RequestHooks::*failing, unsigned most,
                                     const std::function<Reply()>& request) {
    std::string text;
    for (unsigned call = 1; call <= most; ++call) {
        bool wasRefused = false;
        Reply reply;
        const std::string errors = errorsOf([&] {
            RequestHooks hooks(*broker);
            hooks.associationClass = family.associationClass;
            hooks.*failing = call;
            requestHooks = &hooks;
            reply = request();
            requestHooks = nullptr;
            wasRefused = hooks.hasRefused();
        });
        if (!wasRefused) break;
        text += (text.empty() ? "" : " | ") + std::to_string(reply.rows.size()) + " rows, status " +
                std::to_string(reply.rc) + (reply.doneCount == 1 ? "" : ", not ended once") + "; " + errors;
    }
    return text.empty() ? "no such call" : text;
}

/// How many keys an enumeration of names adds, those of rows that are dropped among them. At most a hundred are
/// counted.
unsigned GoldenTest::addedKeys() {
    for (unsigned call = 1; call <= 100; ++call) {
        RequestHooks hooks(*broker);
        hooks.associationClass = family.associationClass;
        hooks.failingAddKey = call;
        requestHooks = &hooks;
        instanceNames(classPath(family.associationClass));
        requestHooks = nullptr;
        if (!hooks.hasRefused()) return call - 1;
    }
    return 100;
}

std::string GoldenTest::logTexts() {
    const Path whole = classPath(family.associationClass);
    const Path pair = names(family.associationClass).at(0);
    const auto nameSpace = &RequestHooks::failingNameSpaceRead;
    const auto className = &RequestHooks::failingClassNameRead;
    constexpr unsigned rows = 4;
    std::string text;
    text += line("enumerateInstanceNames: " + messagesOf([&] { instanceNames(whole); }));
    text += line("enumerateInstances: " + messagesOf([&] { instances(whole); }));
    text += line("getInstance: " + messagesOf([&] { instance(pair); }));
    text += line("names, namespace unreadable: " + failingCalls(nameSpace, 10, [&] { return instanceNames(whole); }));
    text += line("instances, namespace unreadable: " + failingCalls(nameSpace, 10, [&] { return instances(whole); }));
    text += line("getInstance, namespace unreadable: " + failingCalls(nameSpace, 10, [&] { return instance(pair); }));
    text += line("getInstance, class name unreadable: " + failingCalls(className, 10, [&] { return instance(pair); }));
    for (const std::string& role : {family.role1, family.role2}) {
        text += line("getInstance without " + role + ": " + failures([&] { return instance(pair.without(role)); }));
        text +=
            line("getInstance, " + role + " a text: " + failures([&] { return instance(pair.with(role, "a text")); }));
    }
    text += line("getInstance without both: " +
                 failures([&] { return instance(pair.without(family.role1).without(family.role2)); }));
    text += line("names, a key that cannot be added: " +
                 failingCalls(&RequestHooks::failingAddKey, rows, [&] { return instanceNames(whole); }));
    text += line("names, keys that are added: " + std::to_string(addedKeys()));
    for (const bool sourceIsLeft : {true, false})
        text += logOfSearches(sourceIsLeft);
    return text;
}

std::string GoldenTest::logOfSearches(bool sourceIsLeft) {
    const Path source = fruitfulSource(sourceIsLeft).value();
    shortNames.nameSource(source);
    std::string text = " from " + shortNames.of(source) + '\n';
    for (const Operation operation : allOperations)
        text += line(std::string(nameOf(operation)) + ": " + messagesOf([&] { ask(operation, source, ofFamily()); }));
    const auto asked = [&](Operation operation, const Path& from) {
        return [this, operation, from] { return ask(operation, from, ofFamily()); };
    };
    text += line("namespace unreadable: " +
                 failingCalls(&RequestHooks::failingNameSpaceRead, 10, asked(Operation::associatorNames, source)));
    for (const Operation operation : {Operation::associators, Operation::referenceNames})
        text += line(std::string(nameOf(operation)) + ", class name unreadable: " +
                     failingCalls(&RequestHooks::failingClassNameRead, 10, asked(operation, source)));
    text += line("referenceNames, a key that cannot be added: " +
                 failingCalls(&RequestHooks::failingAddKey, 4, asked(Operation::referenceNames, source)));
    std::size_t withoutErrors = 0;
    Path bare = source;
    bare.keys.clear();
    text += line("no key at all: " + failures(asked(Operation::references, bare)));
    for (const Path::Key& key : source.keys) {
        text += line(key.name + " absent: " + failures(asked(Operation::associators, source.without(key.name))));
        text += line(key.name +
                     " a number: " + failures(asked(Operation::associators, source.with(key.name, std::uint32_t{7}))));
        for (const Path::Key& other : source.keys) {
            if (other.name == key.name) continue;
            const Path changed = source.with(key.name, "elsewhere").without(other.name);
            const std::string both = failures(asked(Operation::references, changed));
            if (both.find("log \"") == std::string::npos)
                ++withoutErrors;
            else
                text += line(key.name + " of another object and " + other.name + " absent: " + both);
        }
    }
    return text + line("one key of another object and one absent: no error in " + std::to_string(withoutErrors) +
                       " other ways");
}
