// The tables of what is gone: a call through one is written down, whatever else it would have done.
#include "dead_tables.h"

#include "objects.h"
#include "refusing_slots.h"

namespace foreign_server {

namespace {

template <class Table>
Table makeDead(void (*fill)(Table&)) {
    Table table{};
    table.ftVersion = 1;
    fill(table);
    return table;
}

void fillString(CMPIStringFT& string) {
    FOREIGN_DEAD_SLOT(string, release);
    FOREIGN_DEAD_SLOT(string, clone);
    FOREIGN_DEAD_SLOT(string, getCharPtr);
}

void fillArray(CMPIArrayFT& array) {
    FOREIGN_DEAD_SLOT(array, release);
    FOREIGN_DEAD_SLOT(array, clone);
    FOREIGN_DEAD_SLOT(array, getSize);
    FOREIGN_DEAD_SLOT(array, getSimpleType);
    FOREIGN_DEAD_SLOT(array, getElementAt);
    FOREIGN_DEAD_SLOT(array, setElementAt);
}

void fillDate(CMPIDateTimeFT& date) {
    FOREIGN_DEAD_SLOT(date, release);
    FOREIGN_DEAD_SLOT(date, clone);
    FOREIGN_DEAD_SLOT(date, getBinaryFormat);
    FOREIGN_DEAD_SLOT(date, getStringFormat);
    FOREIGN_DEAD_SLOT(date, isInterval);
}

void fillPath(CMPIObjectPathFT& path) {
    FOREIGN_DEAD_SLOT(path, release);
    FOREIGN_DEAD_SLOT(path, clone);
    FOREIGN_DEAD_SLOT(path, setNameSpace);
    FOREIGN_DEAD_SLOT(path, getNameSpace);
    FOREIGN_DEAD_SLOT(path, setHostname);
    FOREIGN_DEAD_SLOT(path, getHostname);
    FOREIGN_DEAD_SLOT(path, setClassName);
    FOREIGN_DEAD_SLOT(path, getClassName);
    FOREIGN_DEAD_SLOT(path, addKey);
    FOREIGN_DEAD_SLOT(path, getKey);
    FOREIGN_DEAD_SLOT(path, getKeyAt);
    FOREIGN_DEAD_SLOT(path, getKeyCount);
    FOREIGN_DEAD_SLOT(path, setNameSpaceFromObjectPath);
    FOREIGN_DEAD_SLOT(path, setHostAndNameSpaceFromObjectPath);
    FOREIGN_DEAD_SLOT(path, toString);
}

void fillInstance(CMPIInstanceFT& instance) {
    FOREIGN_DEAD_SLOT(instance, release);
    FOREIGN_DEAD_SLOT(instance, clone);
    FOREIGN_DEAD_SLOT(instance, getProperty);
    FOREIGN_DEAD_SLOT(instance, getPropertyAt);
    FOREIGN_DEAD_SLOT(instance, getPropertyCount);
    FOREIGN_DEAD_SLOT(instance, setProperty);
    FOREIGN_DEAD_SLOT(instance, getObjectPath);
    FOREIGN_DEAD_SLOT(instance, setPropertyFilter);
    FOREIGN_DEAD_SLOT(instance, setObjectPath);
}

void fillArgs(CMPIArgsFT& args) {
    FOREIGN_DEAD_SLOT(args, release);
    FOREIGN_DEAD_SLOT(args, clone);
    FOREIGN_DEAD_SLOT(args, addArg);
    FOREIGN_DEAD_SLOT(args, getArg);
    FOREIGN_DEAD_SLOT(args, getArgAt);
    FOREIGN_DEAD_SLOT(args, getArgCount);
}

void fillContext(CMPIContextFT& context) {
    FOREIGN_DEAD_SLOT(context, release);
    FOREIGN_DEAD_SLOT(context, getEntry);
    FOREIGN_DEAD_SLOT(context, getEntryAt);
    FOREIGN_DEAD_SLOT(context, getEntryCount);
    FOREIGN_DEAD_SLOT(context, addEntry);
}

void fillResult(CMPIResultFT& result) {
    FOREIGN_DEAD_SLOT(result, returnData);
    FOREIGN_DEAD_SLOT(result, returnInstance);
    FOREIGN_DEAD_SLOT(result, returnObjectPath);
    FOREIGN_DEAD_SLOT(result, returnDone);
}

void fillExpression(CMPISelectExpFT& expression) {
    FOREIGN_DEAD_SLOT(expression, release);
    FOREIGN_DEAD_SLOT(expression, clone);
    FOREIGN_DEAD_SLOT(expression, evaluate);
    FOREIGN_DEAD_SLOT(expression, getString);
    FOREIGN_DEAD_SLOT(expression, getDOC);
    FOREIGN_DEAD_SLOT(expression, getCOD);
    FOREIGN_DEAD_SLOT(expression, evaluateUsingAccessor);
}

void fillMakers(CMPIBrokerEncFT& broker) {
    FOREIGN_DEAD_SLOT(broker, newInstance);
    FOREIGN_DEAD_SLOT(broker, newObjectPath);
    FOREIGN_DEAD_SLOT(broker, newArgs);
    FOREIGN_DEAD_SLOT(broker, newString);
    FOREIGN_DEAD_SLOT(broker, newArray);
    FOREIGN_DEAD_SLOT(broker, newDateTime);
    FOREIGN_DEAD_SLOT(broker, newDateTimeFromBinary);
    FOREIGN_DEAD_SLOT(broker, newDateTimeFromChars);
    FOREIGN_DEAD_SLOT(broker, newSelectExp);
    FOREIGN_DEAD_SLOT(broker, classPathIsA);
    FOREIGN_DEAD_SLOT(broker, toString);
}

} // namespace

void* deadTableOf(Kind kind) {
    static CMPIStringFT strings = makeDead(fillString);
    static CMPIArrayFT arrays = makeDead(fillArray);
    static CMPIDateTimeFT dates = makeDead(fillDate);
    static CMPIObjectPathFT paths = makeDead(fillPath);
    static CMPIInstanceFT instances = makeDead(fillInstance);
    static CMPIArgsFT args = makeDead(fillArgs);
    static CMPIContextFT contexts = makeDead(fillContext);
    static CMPIResultFT results = makeDead(fillResult);
    static CMPISelectExpFT expressions = makeDead(fillExpression);
    void* const tables[] = {&strings, &arrays, &dates, &paths, &instances, &args, &contexts, &results, &expressions};
    return tables[static_cast<std::size_t>(kind)];
}

void kill(CMPIBroker& dead) {
    static CMPIBrokerEncFT makers = makeDead(fillMakers);
    static CMPIBrokerFT calls = [] {
        CMPIBrokerFT broker{};
        FOREIGN_DEAD_SLOT(broker, prepareAttachThread);
        FOREIGN_DEAD_SLOT(broker, attachThread);
        FOREIGN_DEAD_SLOT(broker, detachThread);
        FOREIGN_DEAD_SLOT(broker, deliverIndication);
        return broker;
    }();
    static CMPIBrokerExtFT threads = [] {
        CMPIBrokerExtFT broker{};
        FOREIGN_DEAD_SLOT(broker, newThread);
        return broker;
    }();
    dead = {nullptr, &calls, &makers, &threads, nullptr};
}

} // namespace foreign_server
