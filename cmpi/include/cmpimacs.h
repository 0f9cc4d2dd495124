/* cmpimacs.h: shorthand for calls through the tables. Each macro calls the slot that its name tells; rc may be NULL. */
#ifndef _CMPIMACS_H_
#define _CMPIMACS_H_

#define CMNewInstance(b, op, rc) ((b)->eft->newInstance((b), (op), (rc)))
#define CMNewObjectPath(b, ns, cn, rc) ((b)->eft->newObjectPath((b), (ns), (cn), (rc)))
#define CMNewString(b, s, rc) ((b)->eft->newString((b), (s), (rc)))
#define CMNewArgs(b, rc) ((b)->eft->newArgs((b), (rc)))
#define CMNewArray(b, n, t, rc) ((b)->eft->newArray((b), (n), (t), (rc)))
#define CMNewDateTime(b, rc) ((b)->eft->newDateTime((b), (rc)))
#define CMNewDateTimeFromBinary(b, us, i, rc) ((b)->eft->newDateTimeFromBinary((b), (us), (i), (rc)))
#define CMNewDateTimeFromChars(b, s, rc) ((b)->eft->newDateTimeFromChars((b), (s), (rc)))
#define CMNewSelectExp(b, q, l, p, rc) ((b)->eft->newSelectExp((b), (q), (l), (p), (rc)))
#define CMClassPathIsA(b, op, cn, rc) ((b)->eft->classPathIsA((b), (op), (cn), (rc)))

#define CMGetClassName(p, rc) ((p)->ft->getClassName((p), (rc)))
#define CMGetNameSpace(p, rc) ((p)->ft->getNameSpace((p), (rc)))
#define CMGetHostname(p, rc) ((p)->ft->getHostname((p), (rc)))
#define CMGetKey(p, n, rc) ((p)->ft->getKey((p), (n), (rc)))
#define CMGetKeyAt(p, i, n, rc) ((p)->ft->getKeyAt((p), (i), (n), (rc)))
#define CMGetKeyCount(p, rc) ((p)->ft->getKeyCount((p), (rc)))
#define CMAddKey(p, n, v, t) ((p)->ft->addKey((p), (n), (const CMPIValue*)(v), (t)))
#define CMSetNameSpace(p, s) ((p)->ft->setNameSpace((p), (s)))
#define CMSetClassName(p, s) ((p)->ft->setClassName((p), (s)))
#define CMSetHostname(p, s) ((p)->ft->setHostname((p), (s)))
#define CMObjectPathToString(p, rc) ((p)->ft->toString((p), (rc)))

#define CMGetProperty(i, n, rc) ((i)->ft->getProperty((i), (n), (rc)))
#define CMGetPropertyAt(i, k, n, rc) ((i)->ft->getPropertyAt((i), (k), (n), (rc)))
#define CMGetPropertyCount(i, rc) ((i)->ft->getPropertyCount((i), (rc)))
#define CMSetProperty(i, n, v, t) ((i)->ft->setProperty((i), (n), (const CMPIValue*)(v), (t)))
#define CMSetPropertyFilter(i, pl, k) ((i)->ft->setPropertyFilter((i), (pl), (k)))
#define CMGetObjectPath(i, rc) ((i)->ft->getObjectPath((i), (rc)))
#define CMSetObjectPath(i, p) ((i)->ft->setObjectPath((i), (p)))
#define CMSetPropertyWithOrigin(i, n, v, t, o)                                                                         \
    ((i)->ft->setPropertyWithOrigin((i), (n), (const CMPIValue*)(v), (t), (o)))

#define CMGetCharPtr(s) ((s)->ft->getCharPtr((s), NULL))
#define CMGetCharsPtr(s, rc) ((s)->ft->getCharPtr((s), (rc)))

#define CMGetArrayCount(a, rc) ((a)->ft->getSize((a), (rc)))
#define CMGetArrayType(a, rc) ((a)->ft->getSimpleType((a), (rc)))
#define CMGetArrayElementAt(a, k, rc) ((a)->ft->getElementAt((a), (k), (rc)))
#define CMSetArrayElementAt(a, k, v, t) ((a)->ft->setElementAt((a), (k), (const CMPIValue*)(v), (t)))

#define CMGetArg(a, n, rc) ((a)->ft->getArg((a), (n), (rc)))
#define CMGetArgAt(a, k, n, rc) ((a)->ft->getArgAt((a), (k), (n), (rc)))
#define CMGetArgCount(a, rc) ((a)->ft->getArgCount((a), (rc)))
#define CMAddArg(a, n, v, t) ((a)->ft->addArg((a), (n), (const CMPIValue*)(v), (t)))

#define CMReturnData(r, v, t) ((r)->ft->returnData((r), (const CMPIValue*)(v), (t)))
#define CMReturnInstance(r, i) ((r)->ft->returnInstance((r), (i)))
#define CMReturnObjectPath(r, p) ((r)->ft->returnObjectPath((r), (p)))
#define CMReturnDone(r) ((r)->ft->returnDone((r)))
#define CMReturnError(r, e) ((r)->ft->returnError((r), (e)))

#define CMGetContextEntry(c, n, rc) ((c)->ft->getEntry((c), (n), (rc)))
#define CMGetContextEntryAt(c, k, n, rc) ((c)->ft->getEntryAt((c), (k), (n), (rc)))
#define CMGetContextEntryCount(c, rc) ((c)->ft->getEntryCount((c), (rc)))
#define CMAddContextEntry(c, n, v, t) ((c)->ft->addEntry((c), (n), (const CMPIValue*)(v), (t)))

#define CMGetNext(e, rc) ((e)->ft->getNext((e), (rc)))
#define CMHasNext(e, rc) ((e)->ft->hasNext((e), (rc)))
#define CMToArray(e, rc) ((e)->ft->toArray((e), (rc)))

#define CMGetBinaryFormat(d, rc) ((d)->ft->getBinaryFormat((d), (rc)))
#define CMGetStringFormat(d, rc) ((d)->ft->getStringFormat((d), (rc)))
#define CMIsInterval(d, rc) ((d)->ft->isInterval((d), (rc)))

#define CMClone(o, rc) ((o)->ft->clone((o), (rc)))
#define CMRelease(o) ((o)->ft->release((o)))

#define CBPrepareAttachThread(b, c) ((b)->bft->prepareAttachThread((b), (c)))
#define CBAttachThread(b, c) ((b)->bft->attachThread((b), (c)))
#define CBDetachThread(b, c) ((b)->bft->detachThread((b), (c)))
#define CBDeliverIndication(b, c, ns, i) ((b)->bft->deliverIndication((b), (c), (ns), (i)))

#define CMIsNullObject(o) ((o) == NULL || (o)->hdl == NULL)
#define CMIsNullValue(v) (((v).state & CMPI_nullValue) != 0)
#define CMIsKeyValue(v) (((v).state & CMPI_keyValue) != 0)
#define CMIsArray(v) (((v).type & CMPI_ARRAY) != 0)

#endif
