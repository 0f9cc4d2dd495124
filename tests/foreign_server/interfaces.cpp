#include "interfaces.h"

#include "request.h"
#include "server.h"

namespace foreign_server {

namespace {

template <class Interface>
Interface* providers(Interface* shown) {
    // The shown words are the first of their passage.
    return reinterpret_cast<Passage<Interface>*>(shown)->provider;
}

/// A request with a path and a result. @param call (provider's interface, request, result, path)
template <class Interface, class Call>
CMPIStatus ask(Interface* shown, const CMPIContext* context, const CMPIResult* hostResult,
               const CMPIObjectPath* hostPath, Call&& call) {
    Request request(context);
    CMPIObjectPath* path = request.path(hostPath);
    CMPIResult* result = request.result();
    Server::current().announce(path, result);
    return request.finish(call(providers(shown), request, result, path), hostResult);
}

template <class Interface>
CMPIStatus cleanup(Interface* shown, const CMPIContext* context, CMPIBoolean terminating) {
    Request request(context);
    Interface* provider = providers(shown);
    return request.finish(provider->ft->cleanup(provider, request.context(), terminating), nullptr);
}

CMPIStatus enumerateInstanceNames(CMPIInstanceMI* shown, const CMPIContext* context, const CMPIResult* result,
                                  const CMPIObjectPath* path) {
    return ask(shown, context, result, path, [](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->enumerateInstanceNames(mi, request.context(), answers, own);
    });
}

CMPIStatus enumerateInstances(CMPIInstanceMI* shown, const CMPIContext* context, const CMPIResult* result,
                              const CMPIObjectPath* path, const char** properties) {
    return ask(shown, context, result, path, [=](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->enumerateInstances(mi, request.context(), answers, own, request.list(properties));
    });
}

CMPIStatus getInstance(CMPIInstanceMI* shown, const CMPIContext* context, const CMPIResult* result,
                       const CMPIObjectPath* path, const char** properties) {
    return ask(shown, context, result, path, [=](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->getInstance(mi, request.context(), answers, own, request.list(properties));
    });
}

CMPIStatus createInstance(CMPIInstanceMI* shown, const CMPIContext* context, const CMPIResult* result,
                          const CMPIObjectPath* path, const CMPIInstance* instance) {
    return ask(shown, context, result, path, [=](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->createInstance(mi, request.context(), answers, own, request.instance(instance));
    });
}

CMPIStatus modifyInstance(CMPIInstanceMI* shown, const CMPIContext* context, const CMPIResult* result,
                          const CMPIObjectPath* path, const CMPIInstance* instance, const char** properties) {
    return ask(shown, context, result, path, [=](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->modifyInstance(mi, request.context(), answers, own, request.instance(instance),
                                      request.list(properties));
    });
}

CMPIStatus deleteInstance(CMPIInstanceMI* shown, const CMPIContext* context, const CMPIResult* result,
                          const CMPIObjectPath* path) {
    return ask(shown, context, result, path, [](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->deleteInstance(mi, request.context(), answers, own);
    });
}

CMPIStatus execQuery(CMPIInstanceMI* shown, const CMPIContext* context, const CMPIResult* result,
                     const CMPIObjectPath* path, const char* query, const char* language) {
    return ask(shown, context, result, path, [=](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->execQuery(mi, request.context(), answers, own, request.text(query), request.text(language));
    });
}

CMPIStatus associators(CMPIAssociationMI* shown, const CMPIContext* context, const CMPIResult* result,
                       const CMPIObjectPath* path, const char* associationClass, const char* resultClass,
                       const char* role, const char* resultRole, const char** properties) {
    return ask(shown, context, result, path, [=](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->associators(mi, request.context(), answers, own, request.text(associationClass),
                                   request.text(resultClass), request.text(role), request.text(resultRole),
                                   request.list(properties));
    });
}

CMPIStatus associatorNames(CMPIAssociationMI* shown, const CMPIContext* context, const CMPIResult* result,
                           const CMPIObjectPath* path, const char* associationClass, const char* resultClass,
                           const char* role, const char* resultRole) {
    return ask(shown, context, result, path, [=](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->associatorNames(mi, request.context(), answers, own, request.text(associationClass),
                                       request.text(resultClass), request.text(role), request.text(resultRole));
    });
}

CMPIStatus references(CMPIAssociationMI* shown, const CMPIContext* context, const CMPIResult* result,
                      const CMPIObjectPath* path, const char* resultClass, const char* role, const char** properties) {
    return ask(shown, context, result, path, [=](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->references(mi, request.context(), answers, own, request.text(resultClass), request.text(role),
                                  request.list(properties));
    });
}

CMPIStatus referenceNames(CMPIAssociationMI* shown, const CMPIContext* context, const CMPIResult* result,
                          const CMPIObjectPath* path, const char* resultClass, const char* role) {
    return ask(shown, context, result, path, [=](auto* mi, Request& request, auto* answers, auto* own) {
        return mi->ft->referenceNames(mi, request.context(), answers, own, request.text(resultClass),
                                      request.text(role));
    });
}

CMPIStatus invokeMethod(CMPIMethodMI* shown, const CMPIContext* context, const CMPIResult* hostResult,
                        const CMPIObjectPath* hostPath, const char* method, const CMPIArgs* in, CMPIArgs* out) {
    Request request(context);
    CMPIMethodMI* mi = providers(shown);
    CMPIObjectPath* path = request.path(hostPath);
    CMPIResult* result = request.result();
    Server::current().announce(path, result);
    const CMPIArgs* given = request.args(in);
    CMPIArgs* wanted = request.args(out);
    return request.finish(
        mi->ft->invokeMethod(mi, request.context(), result, path, request.text(method), given, wanted), hostResult,
        out);
}

CMPIStatus authorizeFilter(CMPIIndicationMI* shown, const CMPIContext* context, const CMPISelectExp* filter,
                           const char* className, const CMPIObjectPath* path, const char* owner) {
    Request request(context);
    CMPIIndicationMI* mi = providers(shown);
    return request.finish(mi->ft->authorizeFilter(mi, request.context(), request.selectExp(filter),
                                                  request.text(className), request.path(path), request.text(owner)),
                          nullptr);
}

CMPIStatus mustPoll(CMPIIndicationMI* shown, const CMPIContext* context, const CMPISelectExp* filter,
                    const char* className, const CMPIObjectPath* path) {
    Request request(context);
    CMPIIndicationMI* mi = providers(shown);
    return request.finish(
        mi->ft->mustPoll(mi, request.context(), request.selectExp(filter), request.text(className), request.path(path)),
        nullptr);
}

CMPIStatus activateFilter(CMPIIndicationMI* shown, const CMPIContext* context, const CMPISelectExp* filter,
                          const char* className, const CMPIObjectPath* path, CMPIBoolean first) {
    Request request(context);
    CMPIIndicationMI* mi = providers(shown);
    const CMPIStatus status = mi->ft->activateFilter(mi, request.context(), request.selectExp(filter),
                                                     request.text(className), request.path(path), first);
    if (status.rc == CMPI_RC_OK) ++Server::current().subscriptions;
    return request.finish(status, nullptr);
}

CMPIStatus deActivateFilter(CMPIIndicationMI* shown, const CMPIContext* context, const CMPISelectExp* filter,
                            const char* className, const CMPIObjectPath* path, CMPIBoolean last) {
    Request request(context);
    CMPIIndicationMI* mi = providers(shown);
    --Server::current().subscriptions;
    return request.finish(mi->ft->deActivateFilter(mi, request.context(), request.selectExp(filter),
                                                   request.text(className), request.path(path), last),
                          nullptr);
}

CMPIStatus enableIndications(CMPIIndicationMI* shown, const CMPIContext* context) {
    Request request(context);
    CMPIIndicationMI* mi = providers(shown);
    return request.finish(mi->ft->enableIndications(mi, request.context()), nullptr);
}

CMPIStatus disableIndications(CMPIIndicationMI* shown, const CMPIContext* context) {
    Request request(context);
    CMPIIndicationMI* mi = providers(shown);
    return request.finish(mi->ft->disableIndications(mi, request.context()), nullptr);
}

/// Calls a factory, and shows the test a passage with the same words in front.
template <class Interface, class Table>
Interface* open(Passage<Interface>& passage, Table& table, const Table& passing, Server::Factory<Interface> factory,
                CMPIStatus* hostStatus) {
    Server& server = Server::current();
    // Collects ended threads, as servers do at some time. One that still runs behind its clean-up stays to be found.
    if (server.runningThreads() == 0) server.waitForThreads();
    // A factory's context has no entries.
    Request request(nullptr);
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    passage.provider = factory(server.broker(), request.context(), hostStatus ? &status : nullptr);
    if (hostStatus) *hostStatus = request.finish(status, nullptr);
    if (!passage.provider) return nullptr;
    const Table& providers = *passage.provider->ft;
    table = passing;
    table.ftVersion = providers.ftVersion;
    table.miVersion = providers.miVersion;
    table.miName = providers.miName;
    passage.shown = {passage.provider->hdl, &table};
    return &passage.shown;
}

} // namespace

CMPIInstanceMI* Server::offer(Factory<CMPIInstanceMI> factory, CMPIStatus* hostStatus) {
    const CMPIInstanceMIFT passing = {0,
                                      0,
                                      nullptr,
                                      cleanup<CMPIInstanceMI>,
                                      enumerateInstanceNames,
                                      enumerateInstances,
                                      getInstance,
                                      createInstance,
                                      modifyInstance,
                                      deleteInstance,
                                      execQuery};
    return open(interfaces->instance, interfaces->instanceTable, passing, factory, hostStatus);
}

CMPIAssociationMI* Server::offer(Factory<CMPIAssociationMI> factory, CMPIStatus* hostStatus) {
    const CMPIAssociationMIFT passing = {
        0, 0, nullptr, cleanup<CMPIAssociationMI>, associators, associatorNames, references, referenceNames};
    return open(interfaces->association, interfaces->associationTable, passing, factory, hostStatus);
}

CMPIMethodMI* Server::offer(Factory<CMPIMethodMI> factory, CMPIStatus* hostStatus) {
    const CMPIMethodMIFT passing = {0, 0, nullptr, cleanup<CMPIMethodMI>, invokeMethod};
    return open(interfaces->method, interfaces->methodTable, passing, factory, hostStatus);
}

CMPIIndicationMI* Server::offer(Factory<CMPIIndicationMI> factory, CMPIStatus* hostStatus) {
    const CMPIIndicationMIFT passing = {0,
                                        0,
                                        nullptr,
                                        cleanup<CMPIIndicationMI>,
                                        authorizeFilter,
                                        mustPoll,
                                        activateFilter,
                                        deActivateFilter,
                                        enableIndications,
                                        disableIndications};
    return open(interfaces->indication, interfaces->indicationTable, passing, factory, hostStatus);
}

} // namespace foreign_server
