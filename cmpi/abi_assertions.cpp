// Holds every struct of the CMPI headers against the layout that CIM servers were built with: a slot out of place
// would not fail to compile, it would call another function of the server.

#include "cmpidt.h"
#include "cmpift.h"

#include <cstddef>

#define CMPI_SIZE(type, size) static_assert(sizeof(type) == (size), #type)
#define CMPI_PLACE(type, member, offset, size)                                                                         \
    static_assert(offsetof(type, member) == (offset) && sizeof(type::member) == (size), #type "." #member)

CMPI_SIZE(CMPIValuePtr, 16);
CMPI_PLACE(CMPIValuePtr, ptr, 0, 8);
CMPI_PLACE(CMPIValuePtr, length, 8, 4);

CMPI_SIZE(CMPIValue, 16);
CMPI_PLACE(CMPIValue, uint64, 0, 8);
CMPI_PLACE(CMPIValue, uint32, 0, 4);
CMPI_PLACE(CMPIValue, uint16, 0, 2);
CMPI_PLACE(CMPIValue, uint8, 0, 1);
CMPI_PLACE(CMPIValue, sint64, 0, 8);
CMPI_PLACE(CMPIValue, sint32, 0, 4);
CMPI_PLACE(CMPIValue, sint16, 0, 2);
CMPI_PLACE(CMPIValue, sint8, 0, 1);
CMPI_PLACE(CMPIValue, real64, 0, 8);
CMPI_PLACE(CMPIValue, real32, 0, 4);
CMPI_PLACE(CMPIValue, boolean, 0, 1);
CMPI_PLACE(CMPIValue, char16, 0, 2);
CMPI_PLACE(CMPIValue, inst, 0, 8);
CMPI_PLACE(CMPIValue, ref, 0, 8);
CMPI_PLACE(CMPIValue, args, 0, 8);
CMPI_PLACE(CMPIValue, filter, 0, 8);
CMPI_PLACE(CMPIValue, Enum, 0, 8);
CMPI_PLACE(CMPIValue, array, 0, 8);
CMPI_PLACE(CMPIValue, string, 0, 8);
CMPI_PLACE(CMPIValue, chars, 0, 8);
CMPI_PLACE(CMPIValue, dateTime, 0, 8);
CMPI_PLACE(CMPIValue, dataPtr, 0, 16);
CMPI_PLACE(CMPIValue, Byte, 0, 1);
CMPI_PLACE(CMPIValue, Short, 0, 2);
CMPI_PLACE(CMPIValue, Int, 0, 4);
CMPI_PLACE(CMPIValue, Long, 0, 8);
CMPI_PLACE(CMPIValue, Float, 0, 4);
CMPI_PLACE(CMPIValue, Double, 0, 8);

CMPI_SIZE(CMPIData, 24);
CMPI_PLACE(CMPIData, type, 0, 2);
CMPI_PLACE(CMPIData, state, 2, 2);
CMPI_PLACE(CMPIData, value, 8, 16);

CMPI_SIZE(CMPIStatus, 16);
CMPI_PLACE(CMPIStatus, rc, 0, 4);
CMPI_PLACE(CMPIStatus, msg, 8, 8);

CMPI_SIZE(CMPIBroker, 40);
CMPI_PLACE(CMPIBroker, hdl, 0, 8);
CMPI_PLACE(CMPIBroker, bft, 8, 8);
CMPI_PLACE(CMPIBroker, eft, 16, 8);
CMPI_PLACE(CMPIBroker, xft, 24, 8);
CMPI_PLACE(CMPIBroker, mft, 32, 8);

CMPI_SIZE(CMPIBrokerFT, 160);
CMPI_PLACE(CMPIBrokerFT, brokerCapabilities, 0, 4);
CMPI_PLACE(CMPIBrokerFT, brokerVersion, 4, 4);
CMPI_PLACE(CMPIBrokerFT, brokerName, 8, 8);
CMPI_PLACE(CMPIBrokerFT, prepareAttachThread, 16, 8);
CMPI_PLACE(CMPIBrokerFT, attachThread, 24, 8);
CMPI_PLACE(CMPIBrokerFT, detachThread, 32, 8);
CMPI_PLACE(CMPIBrokerFT, deliverIndication, 40, 8);
CMPI_PLACE(CMPIBrokerFT, enumerateInstanceNames, 48, 8);
CMPI_PLACE(CMPIBrokerFT, getInstance, 56, 8);
CMPI_PLACE(CMPIBrokerFT, createInstance, 64, 8);
CMPI_PLACE(CMPIBrokerFT, modifyInstance, 72, 8);
CMPI_PLACE(CMPIBrokerFT, deleteInstance, 80, 8);
CMPI_PLACE(CMPIBrokerFT, execQuery, 88, 8);
CMPI_PLACE(CMPIBrokerFT, enumerateInstances, 96, 8);
CMPI_PLACE(CMPIBrokerFT, associators, 104, 8);
CMPI_PLACE(CMPIBrokerFT, associatorNames, 112, 8);
CMPI_PLACE(CMPIBrokerFT, references, 120, 8);
CMPI_PLACE(CMPIBrokerFT, referenceNames, 128, 8);
CMPI_PLACE(CMPIBrokerFT, invokeMethod, 136, 8);
CMPI_PLACE(CMPIBrokerFT, setProperty, 144, 8);
CMPI_PLACE(CMPIBrokerFT, getProperty, 152, 8);

CMPI_SIZE(CMPIBrokerEncFT, 168);
CMPI_PLACE(CMPIBrokerEncFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIBrokerEncFT, newInstance, 8, 8);
CMPI_PLACE(CMPIBrokerEncFT, newObjectPath, 16, 8);
CMPI_PLACE(CMPIBrokerEncFT, newArgs, 24, 8);
CMPI_PLACE(CMPIBrokerEncFT, newString, 32, 8);
CMPI_PLACE(CMPIBrokerEncFT, newArray, 40, 8);
CMPI_PLACE(CMPIBrokerEncFT, newDateTime, 48, 8);
CMPI_PLACE(CMPIBrokerEncFT, newDateTimeFromBinary, 56, 8);
CMPI_PLACE(CMPIBrokerEncFT, newDateTimeFromChars, 64, 8);
CMPI_PLACE(CMPIBrokerEncFT, newSelectExp, 72, 8);
CMPI_PLACE(CMPIBrokerEncFT, classPathIsA, 80, 8);
CMPI_PLACE(CMPIBrokerEncFT, toString, 88, 8);
CMPI_PLACE(CMPIBrokerEncFT, isOfType, 96, 8);
CMPI_PLACE(CMPIBrokerEncFT, getType, 104, 8);
CMPI_PLACE(CMPIBrokerEncFT, getMessage, 112, 8);
CMPI_PLACE(CMPIBrokerEncFT, logMessage, 120, 8);
CMPI_PLACE(CMPIBrokerEncFT, trace, 128, 8);
CMPI_PLACE(CMPIBrokerEncFT, newCMPIError, 136, 8);
CMPI_PLACE(CMPIBrokerEncFT, openMessageFile, 144, 8);
CMPI_PLACE(CMPIBrokerEncFT, closeMessageFile, 152, 8);
CMPI_PLACE(CMPIBrokerEncFT, getMessage2, 160, 8);

CMPI_SIZE(CMPIBrokerExtFT, 168);
CMPI_PLACE(CMPIBrokerExtFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIBrokerExtFT, resolveFileName, 8, 8);
CMPI_PLACE(CMPIBrokerExtFT, newThread, 16, 8);
CMPI_PLACE(CMPIBrokerExtFT, joinThread, 24, 8);
CMPI_PLACE(CMPIBrokerExtFT, exitThread, 32, 8);
CMPI_PLACE(CMPIBrokerExtFT, cancelThread, 40, 8);
CMPI_PLACE(CMPIBrokerExtFT, threadSleep, 48, 8);
CMPI_PLACE(CMPIBrokerExtFT, threadOnce, 56, 8);
CMPI_PLACE(CMPIBrokerExtFT, createThreadKey, 64, 8);
CMPI_PLACE(CMPIBrokerExtFT, destroyThreadKey, 72, 8);
CMPI_PLACE(CMPIBrokerExtFT, getThreadSpecific, 80, 8);
CMPI_PLACE(CMPIBrokerExtFT, setThreadSpecific, 88, 8);
CMPI_PLACE(CMPIBrokerExtFT, newMutex, 96, 8);
CMPI_PLACE(CMPIBrokerExtFT, destroyMutex, 104, 8);
CMPI_PLACE(CMPIBrokerExtFT, lockMutex, 112, 8);
CMPI_PLACE(CMPIBrokerExtFT, unlockMutex, 120, 8);
CMPI_PLACE(CMPIBrokerExtFT, newCondition, 128, 8);
CMPI_PLACE(CMPIBrokerExtFT, destroyCondition, 136, 8);
CMPI_PLACE(CMPIBrokerExtFT, condWait, 144, 8);
CMPI_PLACE(CMPIBrokerExtFT, timedCondWait, 152, 8);
CMPI_PLACE(CMPIBrokerExtFT, signalCondition, 160, 8);

CMPI_SIZE(CMPIBrokerMemFT, 120);
CMPI_PLACE(CMPIBrokerMemFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIBrokerMemFT, mark, 8, 8);
CMPI_PLACE(CMPIBrokerMemFT, release, 16, 8);
CMPI_PLACE(CMPIBrokerMemFT, cmpiMalloc, 24, 8);
CMPI_PLACE(CMPIBrokerMemFT, cmpiCalloc, 32, 8);
CMPI_PLACE(CMPIBrokerMemFT, cmpiRealloc, 40, 8);
CMPI_PLACE(CMPIBrokerMemFT, cmpiStrDup, 48, 8);
CMPI_PLACE(CMPIBrokerMemFT, cmpiFree, 56, 8);
CMPI_PLACE(CMPIBrokerMemFT, freeInstance, 64, 8);
CMPI_PLACE(CMPIBrokerMemFT, freeObjectPath, 72, 8);
CMPI_PLACE(CMPIBrokerMemFT, freeArgs, 80, 8);
CMPI_PLACE(CMPIBrokerMemFT, freeString, 88, 8);
CMPI_PLACE(CMPIBrokerMemFT, freeArray, 96, 8);
CMPI_PLACE(CMPIBrokerMemFT, freeDateTime, 104, 8);
CMPI_PLACE(CMPIBrokerMemFT, freeSelectExp, 112, 8);

CMPI_SIZE(CMPIContext, 16);
CMPI_PLACE(CMPIContext, hdl, 0, 8);
CMPI_PLACE(CMPIContext, ft, 8, 8);

CMPI_SIZE(CMPIContextFT, 56);
CMPI_PLACE(CMPIContextFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIContextFT, release, 8, 8);
CMPI_PLACE(CMPIContextFT, clone, 16, 8);
CMPI_PLACE(CMPIContextFT, getEntry, 24, 8);
CMPI_PLACE(CMPIContextFT, getEntryAt, 32, 8);
CMPI_PLACE(CMPIContextFT, getEntryCount, 40, 8);
CMPI_PLACE(CMPIContextFT, addEntry, 48, 8);

CMPI_SIZE(CMPIResult, 16);
CMPI_PLACE(CMPIResult, hdl, 0, 8);
CMPI_PLACE(CMPIResult, ft, 8, 8);

CMPI_SIZE(CMPIResultFT, 64);
CMPI_PLACE(CMPIResultFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIResultFT, release, 8, 8);
CMPI_PLACE(CMPIResultFT, clone, 16, 8);
CMPI_PLACE(CMPIResultFT, returnData, 24, 8);
CMPI_PLACE(CMPIResultFT, returnInstance, 32, 8);
CMPI_PLACE(CMPIResultFT, returnObjectPath, 40, 8);
CMPI_PLACE(CMPIResultFT, returnDone, 48, 8);
CMPI_PLACE(CMPIResultFT, returnError, 56, 8);

CMPI_SIZE(CMPIObjectPath, 16);
CMPI_PLACE(CMPIObjectPath, hdl, 0, 8);
CMPI_PLACE(CMPIObjectPath, ft, 8, 8);

CMPI_SIZE(CMPIObjectPathFT, 160);
CMPI_PLACE(CMPIObjectPathFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIObjectPathFT, release, 8, 8);
CMPI_PLACE(CMPIObjectPathFT, clone, 16, 8);
CMPI_PLACE(CMPIObjectPathFT, setNameSpace, 24, 8);
CMPI_PLACE(CMPIObjectPathFT, getNameSpace, 32, 8);
CMPI_PLACE(CMPIObjectPathFT, setHostname, 40, 8);
CMPI_PLACE(CMPIObjectPathFT, getHostname, 48, 8);
CMPI_PLACE(CMPIObjectPathFT, setClassName, 56, 8);
CMPI_PLACE(CMPIObjectPathFT, getClassName, 64, 8);
CMPI_PLACE(CMPIObjectPathFT, addKey, 72, 8);
CMPI_PLACE(CMPIObjectPathFT, getKey, 80, 8);
CMPI_PLACE(CMPIObjectPathFT, getKeyAt, 88, 8);
CMPI_PLACE(CMPIObjectPathFT, getKeyCount, 96, 8);
CMPI_PLACE(CMPIObjectPathFT, setNameSpaceFromObjectPath, 104, 8);
CMPI_PLACE(CMPIObjectPathFT, setHostAndNameSpaceFromObjectPath, 112, 8);
CMPI_PLACE(CMPIObjectPathFT, getClassQualifier, 120, 8);
CMPI_PLACE(CMPIObjectPathFT, getPropertyQualifier, 128, 8);
CMPI_PLACE(CMPIObjectPathFT, getMethodQualifier, 136, 8);
CMPI_PLACE(CMPIObjectPathFT, getParameterQualifier, 144, 8);
CMPI_PLACE(CMPIObjectPathFT, toString, 152, 8);

CMPI_SIZE(CMPIInstance, 16);
CMPI_PLACE(CMPIInstance, hdl, 0, 8);
CMPI_PLACE(CMPIInstance, ft, 8, 8);

CMPI_SIZE(CMPIInstanceFT, 88);
CMPI_PLACE(CMPIInstanceFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIInstanceFT, release, 8, 8);
CMPI_PLACE(CMPIInstanceFT, clone, 16, 8);
CMPI_PLACE(CMPIInstanceFT, getProperty, 24, 8);
CMPI_PLACE(CMPIInstanceFT, getPropertyAt, 32, 8);
CMPI_PLACE(CMPIInstanceFT, getPropertyCount, 40, 8);
CMPI_PLACE(CMPIInstanceFT, setProperty, 48, 8);
CMPI_PLACE(CMPIInstanceFT, getObjectPath, 56, 8);
CMPI_PLACE(CMPIInstanceFT, setPropertyFilter, 64, 8);
CMPI_PLACE(CMPIInstanceFT, setObjectPath, 72, 8);
CMPI_PLACE(CMPIInstanceFT, setPropertyWithOrigin, 80, 8);

CMPI_SIZE(CMPIArgs, 16);
CMPI_PLACE(CMPIArgs, hdl, 0, 8);
CMPI_PLACE(CMPIArgs, ft, 8, 8);

CMPI_SIZE(CMPIArgsFT, 56);
CMPI_PLACE(CMPIArgsFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIArgsFT, release, 8, 8);
CMPI_PLACE(CMPIArgsFT, clone, 16, 8);
CMPI_PLACE(CMPIArgsFT, addArg, 24, 8);
CMPI_PLACE(CMPIArgsFT, getArg, 32, 8);
CMPI_PLACE(CMPIArgsFT, getArgAt, 40, 8);
CMPI_PLACE(CMPIArgsFT, getArgCount, 48, 8);

CMPI_SIZE(CMPIString, 16);
CMPI_PLACE(CMPIString, hdl, 0, 8);
CMPI_PLACE(CMPIString, ft, 8, 8);

CMPI_SIZE(CMPIStringFT, 32);
CMPI_PLACE(CMPIStringFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIStringFT, release, 8, 8);
CMPI_PLACE(CMPIStringFT, clone, 16, 8);
CMPI_PLACE(CMPIStringFT, getCharPtr, 24, 8);

CMPI_SIZE(CMPIArray, 16);
CMPI_PLACE(CMPIArray, hdl, 0, 8);
CMPI_PLACE(CMPIArray, ft, 8, 8);

CMPI_SIZE(CMPIArrayFT, 56);
CMPI_PLACE(CMPIArrayFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIArrayFT, release, 8, 8);
CMPI_PLACE(CMPIArrayFT, clone, 16, 8);
CMPI_PLACE(CMPIArrayFT, getSize, 24, 8);
CMPI_PLACE(CMPIArrayFT, getSimpleType, 32, 8);
CMPI_PLACE(CMPIArrayFT, getElementAt, 40, 8);
CMPI_PLACE(CMPIArrayFT, setElementAt, 48, 8);

CMPI_SIZE(CMPIEnumeration, 16);
CMPI_PLACE(CMPIEnumeration, hdl, 0, 8);
CMPI_PLACE(CMPIEnumeration, ft, 8, 8);

CMPI_SIZE(CMPIEnumerationFT, 48);
CMPI_PLACE(CMPIEnumerationFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIEnumerationFT, release, 8, 8);
CMPI_PLACE(CMPIEnumerationFT, clone, 16, 8);
CMPI_PLACE(CMPIEnumerationFT, getNext, 24, 8);
CMPI_PLACE(CMPIEnumerationFT, hasNext, 32, 8);
CMPI_PLACE(CMPIEnumerationFT, toArray, 40, 8);

CMPI_SIZE(CMPIDateTime, 16);
CMPI_PLACE(CMPIDateTime, hdl, 0, 8);
CMPI_PLACE(CMPIDateTime, ft, 8, 8);

CMPI_SIZE(CMPIDateTimeFT, 48);
CMPI_PLACE(CMPIDateTimeFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIDateTimeFT, release, 8, 8);
CMPI_PLACE(CMPIDateTimeFT, clone, 16, 8);
CMPI_PLACE(CMPIDateTimeFT, getBinaryFormat, 24, 8);
CMPI_PLACE(CMPIDateTimeFT, getStringFormat, 32, 8);
CMPI_PLACE(CMPIDateTimeFT, isInterval, 40, 8);

CMPI_SIZE(CMPISelectExp, 16);
CMPI_PLACE(CMPISelectExp, hdl, 0, 8);
CMPI_PLACE(CMPISelectExp, ft, 8, 8);

CMPI_SIZE(CMPISelectExpFT, 64);
CMPI_PLACE(CMPISelectExpFT, ftVersion, 0, 4);
CMPI_PLACE(CMPISelectExpFT, release, 8, 8);
CMPI_PLACE(CMPISelectExpFT, clone, 16, 8);
CMPI_PLACE(CMPISelectExpFT, evaluate, 24, 8);
CMPI_PLACE(CMPISelectExpFT, getString, 32, 8);
CMPI_PLACE(CMPISelectExpFT, getDOC, 40, 8);
CMPI_PLACE(CMPISelectExpFT, getCOD, 48, 8);
CMPI_PLACE(CMPISelectExpFT, evaluateUsingAccessor, 56, 8);

CMPI_SIZE(CMPISelectCond, 16);
CMPI_PLACE(CMPISelectCond, hdl, 0, 8);
CMPI_PLACE(CMPISelectCond, ft, 8, 8);

CMPI_SIZE(CMPISelectCondFT, 40);
CMPI_PLACE(CMPISelectCondFT, ftVersion, 0, 4);
CMPI_PLACE(CMPISelectCondFT, release, 8, 8);
CMPI_PLACE(CMPISelectCondFT, clone, 16, 8);
CMPI_PLACE(CMPISelectCondFT, getCountAndType, 24, 8);
CMPI_PLACE(CMPISelectCondFT, getSubCondAt, 32, 8);

CMPI_SIZE(CMPISubCond, 16);
CMPI_PLACE(CMPISubCond, hdl, 0, 8);
CMPI_PLACE(CMPISubCond, ft, 8, 8);

CMPI_SIZE(CMPISubCondFT, 48);
CMPI_PLACE(CMPISubCondFT, ftVersion, 0, 4);
CMPI_PLACE(CMPISubCondFT, release, 8, 8);
CMPI_PLACE(CMPISubCondFT, clone, 16, 8);
CMPI_PLACE(CMPISubCondFT, getCount, 24, 8);
CMPI_PLACE(CMPISubCondFT, getPredicateAt, 32, 8);
CMPI_PLACE(CMPISubCondFT, getPredicate, 40, 8);

CMPI_SIZE(CMPIPredicate, 16);
CMPI_PLACE(CMPIPredicate, hdl, 0, 8);
CMPI_PLACE(CMPIPredicate, ft, 8, 8);

CMPI_SIZE(CMPIPredicateFT, 40);
CMPI_PLACE(CMPIPredicateFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIPredicateFT, release, 8, 8);
CMPI_PLACE(CMPIPredicateFT, clone, 16, 8);
CMPI_PLACE(CMPIPredicateFT, getData, 24, 8);
CMPI_PLACE(CMPIPredicateFT, evaluateUsingAccessor, 32, 8);

CMPI_SIZE(CMPIError, 16);
CMPI_PLACE(CMPIError, hdl, 0, 8);
CMPI_PLACE(CMPIError, ft, 8, 8);

CMPI_SIZE(CMPIErrorFT, 216);
CMPI_PLACE(CMPIErrorFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIErrorFT, release, 8, 8);
CMPI_PLACE(CMPIErrorFT, clone, 16, 8);
CMPI_PLACE(CMPIErrorFT, getErrorType, 24, 8);
CMPI_PLACE(CMPIErrorFT, getOtherErrorType, 32, 8);
CMPI_PLACE(CMPIErrorFT, getOwningEntity, 40, 8);
CMPI_PLACE(CMPIErrorFT, getMessageID, 48, 8);
CMPI_PLACE(CMPIErrorFT, getMessage, 56, 8);
CMPI_PLACE(CMPIErrorFT, getPerceivedSeverity, 64, 8);
CMPI_PLACE(CMPIErrorFT, getProbableCause, 72, 8);
CMPI_PLACE(CMPIErrorFT, getProbableCauseDescription, 80, 8);
CMPI_PLACE(CMPIErrorFT, getRecommendedActions, 88, 8);
CMPI_PLACE(CMPIErrorFT, getErrorSource, 96, 8);
CMPI_PLACE(CMPIErrorFT, getErrorSourceFormat, 104, 8);
CMPI_PLACE(CMPIErrorFT, getOtherErrorSourceFormat, 112, 8);
CMPI_PLACE(CMPIErrorFT, getCIMStatusCode, 120, 8);
CMPI_PLACE(CMPIErrorFT, getCIMStatusCodeDescription, 128, 8);
CMPI_PLACE(CMPIErrorFT, getMessageArguments, 136, 8);
CMPI_PLACE(CMPIErrorFT, setErrorType, 144, 8);
CMPI_PLACE(CMPIErrorFT, setOtherErrorType, 152, 8);
CMPI_PLACE(CMPIErrorFT, setProbableCauseDescription, 160, 8);
CMPI_PLACE(CMPIErrorFT, setRecommendedActions, 168, 8);
CMPI_PLACE(CMPIErrorFT, setErrorSource, 176, 8);
CMPI_PLACE(CMPIErrorFT, setErrorSourceFormat, 184, 8);
CMPI_PLACE(CMPIErrorFT, setOtherErrorSourceFormat, 192, 8);
CMPI_PLACE(CMPIErrorFT, setCIMStatusCodeDescription, 200, 8);
CMPI_PLACE(CMPIErrorFT, setMessageArguments, 208, 8);

CMPI_SIZE(CMPIInstanceMI, 16);
CMPI_PLACE(CMPIInstanceMI, hdl, 0, 8);
CMPI_PLACE(CMPIInstanceMI, ft, 8, 8);

CMPI_SIZE(CMPIInstanceMIFT, 80);
CMPI_PLACE(CMPIInstanceMIFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIInstanceMIFT, miVersion, 4, 4);
CMPI_PLACE(CMPIInstanceMIFT, miName, 8, 8);
CMPI_PLACE(CMPIInstanceMIFT, cleanup, 16, 8);
CMPI_PLACE(CMPIInstanceMIFT, enumerateInstanceNames, 24, 8);
CMPI_PLACE(CMPIInstanceMIFT, enumerateInstances, 32, 8);
CMPI_PLACE(CMPIInstanceMIFT, getInstance, 40, 8);
CMPI_PLACE(CMPIInstanceMIFT, createInstance, 48, 8);
CMPI_PLACE(CMPIInstanceMIFT, modifyInstance, 56, 8);
CMPI_PLACE(CMPIInstanceMIFT, deleteInstance, 64, 8);
CMPI_PLACE(CMPIInstanceMIFT, execQuery, 72, 8);

CMPI_SIZE(CMPIAssociationMI, 16);
CMPI_PLACE(CMPIAssociationMI, hdl, 0, 8);
CMPI_PLACE(CMPIAssociationMI, ft, 8, 8);

CMPI_SIZE(CMPIAssociationMIFT, 56);
CMPI_PLACE(CMPIAssociationMIFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIAssociationMIFT, miVersion, 4, 4);
CMPI_PLACE(CMPIAssociationMIFT, miName, 8, 8);
CMPI_PLACE(CMPIAssociationMIFT, cleanup, 16, 8);
CMPI_PLACE(CMPIAssociationMIFT, associators, 24, 8);
CMPI_PLACE(CMPIAssociationMIFT, associatorNames, 32, 8);
CMPI_PLACE(CMPIAssociationMIFT, references, 40, 8);
CMPI_PLACE(CMPIAssociationMIFT, referenceNames, 48, 8);

CMPI_SIZE(CMPIMethodMI, 16);
CMPI_PLACE(CMPIMethodMI, hdl, 0, 8);
CMPI_PLACE(CMPIMethodMI, ft, 8, 8);

CMPI_SIZE(CMPIMethodMIFT, 32);
CMPI_PLACE(CMPIMethodMIFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIMethodMIFT, miVersion, 4, 4);
CMPI_PLACE(CMPIMethodMIFT, miName, 8, 8);
CMPI_PLACE(CMPIMethodMIFT, cleanup, 16, 8);
CMPI_PLACE(CMPIMethodMIFT, invokeMethod, 24, 8);

CMPI_SIZE(CMPIPropertyMI, 16);
CMPI_PLACE(CMPIPropertyMI, hdl, 0, 8);
CMPI_PLACE(CMPIPropertyMI, ft, 8, 8);

// Headers of some servers end this table one slot earlier; no server calls that slot.
template <typename Table>
constexpr bool propertyTableEndsWell() {
    if constexpr (requires { &Table::setPropertyWithOrigin; }) {
        return sizeof(Table) == 48 && offsetof(Table, setPropertyWithOrigin) == 40 &&
               sizeof(Table::setPropertyWithOrigin) == 8;
    } else {
        return sizeof(Table) == 40;
    }
}
static_assert(propertyTableEndsWell<CMPIPropertyMIFT>(), "CMPIPropertyMIFT");
CMPI_PLACE(CMPIPropertyMIFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIPropertyMIFT, miVersion, 4, 4);
CMPI_PLACE(CMPIPropertyMIFT, miName, 8, 8);
CMPI_PLACE(CMPIPropertyMIFT, cleanup, 16, 8);
CMPI_PLACE(CMPIPropertyMIFT, setProperty, 24, 8);
CMPI_PLACE(CMPIPropertyMIFT, getProperty, 32, 8);

CMPI_SIZE(CMPIIndicationMI, 16);
CMPI_PLACE(CMPIIndicationMI, hdl, 0, 8);
CMPI_PLACE(CMPIIndicationMI, ft, 8, 8);

CMPI_SIZE(CMPIIndicationMIFT, 72);
CMPI_PLACE(CMPIIndicationMIFT, ftVersion, 0, 4);
CMPI_PLACE(CMPIIndicationMIFT, miVersion, 4, 4);
CMPI_PLACE(CMPIIndicationMIFT, miName, 8, 8);
CMPI_PLACE(CMPIIndicationMIFT, cleanup, 16, 8);
CMPI_PLACE(CMPIIndicationMIFT, authorizeFilter, 24, 8);
CMPI_PLACE(CMPIIndicationMIFT, mustPoll, 32, 8);
CMPI_PLACE(CMPIIndicationMIFT, activateFilter, 40, 8);
CMPI_PLACE(CMPIIndicationMIFT, deActivateFilter, 48, 8);
CMPI_PLACE(CMPIIndicationMIFT, enableIndications, 56, 8);
CMPI_PLACE(CMPIIndicationMIFT, disableIndications, 64, 8);
