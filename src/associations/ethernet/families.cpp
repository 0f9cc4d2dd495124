// The plain associations of Ethernet ports, cards, host and software, one row each: most of a row are the log texts in
// which it deviates from the dialect.
#include "associations/families.h"

#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/modules.h"
#include "associations/service_texts.h"

namespace merolt::association {

namespace nic {

namespace {

using ethernet::getInstance_EthernetPort;

constexpr Family plainFamilies[] = {
    // The host and what is in it -------------------------------------------------------------------------------------
    // Keys of any type are read; one that is no text matches nothing.
    {
        .token = "Assoc_ComputerSystem_EthernetPort",
        .className = "Merolt_NIC_ComputerSystemEthernetPort",
        .left = {"GroupComponent", computerSystem},
        .right = {"PartComponent", ethernetPort},
        .matching = {.forEachPair = bothEndsOf<eachPort>,
                     .findLeft = {.keys = {{{"SystemName"}, {"SystemCreationClassName"}}},
                                  .find = onlyIf<namesHostAndClass, theObject>},
                     .findRight = {.keys = {{{"Name"}, {"CreationClassName"}}},
                                   .find = onlyIf<namesHostAndClass, eachPort>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               t.names.nameSpace = "{F}: Error getting namespace\n";
                               logAddKeyOfNamesAsDebug(t);
                               t.findLeft.open = debugText("{F}: findMatchedRole1 was called\n");
                               t.findRight.open = debugText("{F}: findMatchedRole2 was called\n");
                               t.findRight.nameSpace.sink = Sink::debug;
                               t.findRight.addKey.role1.sink = Sink::debug;
                           }),
        .isPopulated = hasCards,
        .places = {.row = 59, .left = {60}, .right = {70}},
    },
    // The endpoint's own keys are not looked at; getInstance tests it through the class of Ethernet ports and so
    // delivers
    // the association whatever the endpoint is.
    {
        .token = "Assoc_ComputerSystem_IPProtocolEndPoint",
        .className = "Merolt_NIC_ComputerSystemIPProtocolEndpoint",
        .left = {"Antecedent", computerSystem},
        .right = {.name = "Dependent", .objects = ipProtocolEndPoint, .existence = getInstance_EthernetPort},
        .matching = {.forEachPair = bothEndsOf<eachPort>,
                     .findLeft = {.keys = {{{"SystemName", KeyTest::isString},
                                            {"SystemCreationClassName", KeyTest::isString}}},
                                  .find = onlyIf<namesHostAndClass, theObject>},
                     .findRight = {.keys = {{{"Name"}}}, .find = onlyIf<namesHost, eachPort>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               t.findLeft.nameSpace.sink = Sink::debug;
                               t.findRight.nameSpace.sink = Sink::debug;
                               t.findRight.key.sink = Sink::debug;
                           }),
        .isPopulated = hasCards,
        .places = {.row = 75, .left = {61}, .right = {75}},
    },
    // Keys of any type are read; one that is no text matches nothing.
    {
        .token = "Assoc_ComputerSystem_SoftwareIdentity",
        .className = "Merolt_NIC_ComputerSystemSoftwareIdentity",
        .left = {"System", computerSystem},
        .right = {"InstalledSoftware", softwareIdentity},
        .matching = {.forEachPair = bothEndsOf<eachIdentity>,
                     .findLeft = {.keys = {{{"InstanceID"}}}, .find = theObjectForEach<eachCardOfIdentity>},
                     .findRight = {.keys = {{{"Name"}}}, .find = onlyIf<namesHost, eachIdentity>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               t.names.addKey = {"{F}: Error addkey Role1 in enumInstanceNames0\n",
                                                 "{F}: Error addkey Role2 in enumInstanceNames0\n"};
                               t.getInstance.open =
                                   "{F}: getInstance_Nic_AssocComputerSystemSoftwareIdentity was called\n";
                           }),
        .isPopulated = hasCards,
        .secondRowChanges = Side::right,
        .places = {.row = 77, .left = {66}, .right = {95}},
    },
    // The service as the storage side makes it: its CreationClassName is the storage class. getInstance tests it
    // through
    // the class of Ethernet ports and so delivers the association whatever the service is.
    {
        .token = "Assoc_ComputerSystem_SoftwareInstallationService",
        .className = "Merolt_NIC_ComputerSystemSoftwareInstallationService",
        .left = {"Antecedent", computerSystem},
        .right = {.name = "Dependent", .objects = storageMadeService, .existence = getInstance_EthernetPort},
        .matching = hostAndItsService<bothEndsOf<theObject>>,
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               speakOfHostAndService(t);
                               logAddKeyOfNamesAsDebug(t);
                               t.getInstance.open =
                                   "{F}: getInstance_Nic_AssocComputerSystemSoftwareInstallationService was called\n";
                           }),
        .isPopulated = hasCards,
        .places = {.row = 71, .left = {67}, .right = {98}},
    },

    // Ports and their endpoints ---------------------------------------------------------------------------------------
    // A port finds the controller of the first card that has its MAC address.
    {
        .token = "Assoc_PortController_EthernetPort",
        .className = "Merolt_NIC_PortControllerEthernetPort",
        .left = {"Antecedent", portController},
        .right = {"Dependent", ethernetPort},
        .matching = {.forEachPair = bothEndsOf<eachPort>,
                     .findLeft = {.keys = {{{"DeviceID", KeyTest::isString}}},
                                  .find = firstOf<eachPortWith<macTextOf>>},
                     .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}},
                                   .find = eachPortWith<portControllerIDOf>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               openAllWithFunctionNames(t);
                               t.requests.open[FUNC_REFNAME] = "{F}: referenceNames was called\n";
                               t.names.nameSpace = "{F}: Error getting namespace\n";
                               t.names.addKey = {"{F}: Error addkey Role1 in enumInstances\n",
                                                 "{F}: Error addkey Role2 in enumInstances\n"};
                               t.instances.nameSpace = "{F}: Error getting namespace\n";
                               t.getInstance.className = "{F}: Error getting ClassName getInstance\n";
                               t.findLeft.nameSpace = "{F}: Error getting namespace findRole1\n";
                               t.findRight.nameSpace = "{F}: Error getting namespace in findRole2\n";
                               addKeyInFindRole(t);
                           }),
        .isPopulated = hasCards,
        .places = {.row = 60, .getInstanceRow = 63, .left = {89}, .right = {74}},
    },
    {
        .token = "Assoc_EthernetPort_LANEndPoint",
        .className = "Merolt_NIC_EthernetPortLANEndpoint",
        .left = {"Antecedent", ethernetPort},
        .right = {"Dependent", lanEndPoint},
        .matching = {.forEachPair = bothEndsOf<eachPort>,
                     .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = eachPortWith<macTextOf>},
                     .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = eachPortWith<macTextOf>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               openAllWithFunctionNames(t);
                               t.names.nameSpace = "{F}: Error getting namespace\n";
                               t.names.addKey = {"{F}: Error addkey Role1 in findMatchedRole2\n",
                                                 "{F}: Error addkey Role2 in findMatchedRole2\n"};
                               t.getInstance.className = "{F}: Error getting ClassName in getInstance\n";
                               t.findRight.nameSpace =
                                   "Assoc_EthernetPort_LANEndPoin: Error getting namespace in findRole1\n";
                           }),
        .isPopulated = hasCards,
        .places = {.row = 64, .getInstanceRow = 66, .left = {71}, .right = {80}},
    },
    {
        .token = "Assoc_NetworkPort_LANEndPoint",
        .className = "Merolt_NIC_NetworkPortLANEndpoint",
        .left = {"Antecedent", networkPort},
        .right = {"Dependent", lanEndPoint},
        .matching = {.forEachPair = bothEndsOf<eachPort>,
                     .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = eachPortWith<macTextOf>},
                     .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = eachPortWith<networkPortIDOf>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               openAllWithFunctionNames(t);
                               t.names.nameSpace = "{F}: Error getting namespace\n";
                               t.names.addKey = {"{F}: Error addkey Role1 in enumInstances\n",
                                                 "{F}: Error addkey Role2 in enumInstances\n"};
                               t.getInstance.className = "{F}: Error getting ClassName in getInstance\n";
                               t.findLeft.nameSpace = "{F}: Error getting namespace findMatchRole1\n";
                               t.findLeft.addKey = {"{F}: Error addkey Role1 in findMatchRole1",
                                                    "{F}: Error addkey Role2 in findMatchRole1"};
                               t.findRight.nameSpace = "{F}:: Error getting namespace in findMatchRole2\n";
                               t.findRight.addKey = {"{F}: Error addkey Role1 in findMatchRole2\n",
                                                     "{F}: Error addkey Role2 in findMatchRole2\n"};
                           }),
        .isPopulated = hasCards,
        .places = {.row = 69, .left = {84}, .right = {82}},
    },
    {
        .token = "Assoc_LANEndPoint_IPProtocolEndPoint",
        .className = "Merolt_NIC_LANEndpointIPProtocolEndpoint",
        .left = {"Antecedent", lanEndPoint},
        .right = {"Dependent", ipProtocolEndPoint},
        .matching = {.forEachPair = bothEndsOf<eachPort>,
                     .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = eachPortWith<macTextOf>},
                     .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = eachPortWith<macTextOf>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               openWithFunctionNames(t);
                               t.names.nameSpace = "{F}: Error getting namespace\n";
                               t.instances.nameSpace = "{F}: Error getting namespace\n";
                               t.getInstance.className = "{F}: Error getting ClassName in getInstance\n";
                               t.findLeft.addKey = {"{F}: Error addkey Role1 in findMatchRole1\n",
                                                    "{F}: Error addkey Role2 in findMatchRole1\n"};
                               t.findRight.addKey = {"{F}: Error addkey Role1 in findMatchRole2\n",
                                                     "{F}: Error addkey Role2 in findMatchRole2\n"};
                           }),
        .isPopulated = hasCards,
        .places = {.row = 76, .left = {81}, .right = {77}},
    },
    // getInstance delivers the capabilities as well as the association, since that is how their existence is tested.
    {
        .token = "Assoc_IPProtocolEndPointCapabilities_IPProtocolEndPoint",
        .className = "Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint",
        .left = {"Capabilities", ipProtocolEndPointCapabilities},
        .right = {"ManagedElement", ipProtocolEndPoint},
        .matching = {.forEachPair = bothEndsOf<eachPort>,
                     .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = firstPortOfEachCardWithMac<0>},
                     .findRight = {.keys = {{{"InstanceID", KeyTest::isString}}}, .find = eachPortWith<macTextOf>}},
        .filters = Filters::applied,
        .texts =
            deviating(ethernetTexts,
                      [](Texts& t) {
                          constexpr AddKeyTexts ofAnotherFamily[] = {
                              {"Assoc_ComputerSystem_IPProtocolEndPoint: Error addkey Role1 in enumInstanceNames\n",
                               "Assoc_ComputerSystem_IPProtocolEndPoint: Error addkey Role2 in enumInstanceNames\n"},
                              {"Assoc_ComputerSystem_IPProtocolEndPoint: Error addkey Role1 in findMatchedRole1\n",
                               "Assoc_ComputerSystem_IPProtocolEndPoint: Error addkey Role2 in findMatchedRole1\n"}};
                          t.names.addKey = ofAnotherFamily[0];
                          t.findLeft.addKey = ofAnotherFamily[1];
                          t.findRight.addKey = ofAnotherFamily[1];
                          t.instances.open = "{F}: enumInstances_{T} was called\n";
                          t.getInstance.open =
                              "{F}: getInstance_AssocIPProtocolEndPointIPAssignmentSettingData was called\n";
                          t.findLeft.nameSpace.sink = Sink::debug;
                          t.findRight.key = "{F}: Error getting Name key in findMatchedRole2\n";
                      }),
        .isPopulated = hasCards,
        .places = {.row = 70, .left = {68}, .right = {76}},
    },

    // Software and the service that updates it ------------------------------------------------------------------------
    {
        .token = "Assoc_SoftwareIdentity_SoftwareInstallationService",
        .className = "Merolt_NIC_SoftwareIdentitySoftwareInstallationService",
        .left = {"AffectedElement", softwareIdentity},
        .right = {"AffectingElement", installationService},
        .matching = {.forEachPair = bothEndsOf<eachIdentity>,
                     .findLeft = {.keys = {{{"Name", KeyTest::isString}}},
                                  .find = onlyIf<namesInstaller, eachIdentity>},
                     .findRight = {.keys = {{{"InstanceID", KeyTest::isString}}}, .find = firstOf<eachCardOfIdentity>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               t.instances.open = "{F}: enumInstances_{T} was called\n";
                               t.instances.nameSpace = "{F}: Error getting namespace in enumInstanceNames\n";
                               t.getInstance.open = "{F}: getInstance_{T} was called\n";
                               t.findLeft.nameSpace = "{F}: Error getting Namespace in findMatchedRole1\n";
                               t.findRight.nameSpace = "{F}:: Error getting namespace in findMatchedRole2\n";
                               t.findRight.key = "{F}:: Error getting InstanceID key in findMatchedRole2\n";
                           }),
        .isPopulated = hasCards,
        .secondRowChanges = Side::left,
        .places = {.row = 73, .left = {97}, .right = {100}},
    },
    // By contract referenceNames names the ends by other keys than references does, keys that the class has not:
    // servers
    // write them in a form that clients refuse.
    {
        .token = "Assoc_PortController_SoftwareInstallationService",
        .className = "Merolt_NIC_PortControllerSoftwareInstallationService",
        .left = {"AffectedElement", portController},
        .right = {"AffectingElement", installationService},
        .matching = {.forEachPair = bothEndsOf<eachCard>,
                     .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesInstaller, eachCard>},
                     .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}},
                                   .find = firstOf<eachCardWith<portControllerIDOf>>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               speakOfControllerAndService(t);
                               t.instances.open =
                                   "{F}: enumInstances_Nic_AssocPortControllerSoftwareInstallationService was called\n";
                           }),
        .referenceNameKeys = {.contract = controllerAndServiceNameKeys, .corrected = nullptr},
        .isPopulated = hasCards,
        .places = {.row = 74, .left = {90}, .right = {99}},
    },
    // Both as the storage side makes them. referenceNames gives the service's path the capabilities' key.
    {
        .token = "Assoc_SoftwareInstallationService_Capabilities",
        .className = "Merolt_NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities",
        .left = {"ManagedElement", storageMadeService},
        .right = {"Capabilities", storageMadeCapabilities},
        .matching = {.forEachPair = bothEndsOf<theObject>,
                     .findLeft = {.keys = {{{"InstanceID", KeyTest::isString}}},
                                  .find = onlyIf<namesInstaller, theObject>,
                                  .referenceNamePath = storageMadeCapabilities.makePath},
                     .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesInstaller, theObject>}},
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               speakOfServiceAndCapabilities(t);
                               t.findRight.nameSpace = "{F}: Error getting Namespace in findMatchedRole2\n";
                           }),
        .isPopulated = hasCards,
        .places = {.row = 72, .left = {101}, .right = {102}},
    },
};

ASSERT_COMPLETE(plainFamilies);

#define ADDRESS_OF(module) &ethernet::module,
constexpr const Family* modules[] = {ETHERNET_MODULES(ADDRESS_OF)};
#undef ADDRESS_OF

constexpr auto all = together(plainFamilies, modules);

} // namespace

} // namespace nic

Families ethernetFamilies() { return nic::all; }

} // namespace merolt::association
