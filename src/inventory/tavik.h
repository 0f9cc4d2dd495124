// The adapter management library TAVIK: its packed records and its calls.
//
// The provider reads the library's tree of adapters in place. Every record is packed, little endian, and stands at
// exactly the offsets below; whatever serves the soname libtavik.so.1 must lay its memory out like this. Spans named
// reserved are neither read nor written by the provider.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

#pragma pack(push, 1)

// Texts that the library hands out end in NUL; a length that goes with one does not count it.

struct TAVIK_LunEntry {
    std::uint16_t number; ///< logical unit number
    std::uint8_t reserved2[12];
    char vendorId[8];            ///< SCSI vendor ID, may lack a terminator
    char productId[16];          ///< SCSI product ID, may lack a terminator
    char productRevision[5];     ///< SCSI product revision
    std::uint8_t identifier[16]; ///< world wide identifier of the logical unit
    std::uint8_t reserved59[16];
    std::uint8_t identifierLength; ///< 16: all 16 bytes count; any other value: the first 8
    std::uint8_t reserved76[8];
    std::uint32_t blockSize; ///< in bytes
    std::uint8_t reserved88[4];
    char osName[268];     ///< the operating system's name of the logical unit
    TAVIK_LunEntry* next; ///< null at the end of the chain
};

struct TAVIK_TargetEntry {
    std::uint8_t reserved0[8];
    std::uint8_t portName[8]; ///< world wide port name of the remote port
    std::uint8_t reserved16[199];
    std::uint32_t lunCount; ///< as the library counts; the chain may be longer or shorter
    TAVIK_LunEntry* firstLun;
    std::uint8_t reserved227[88];
    TAVIK_TargetEntry* next;
};

/** What TAVIK_GetHbaDevicePortProperty fills: the port's current property. */
struct TAVIK_PortPropertyBlock {
    std::uint8_t portName[8]; ///< world wide port name
    std::uint8_t reserved8[3];
    std::uint8_t portType;  ///< port type code, 1 to 9
    std::uint8_t portState; ///< 1 operational, 2 suspended, 3 loop down; others unknown
    std::uint8_t reserved13[37];
    std::uint32_t speedCode;       ///< gigabits per second 1, 2, 4, 8, 10, 16; 3 is auto-negotiate
    std::uint16_t transceiverKind; ///< 6: a readable SFP
    std::uint8_t reserved56[98];
};

/** The storage function's record: the device that every storage call takes. */
struct TAVIK_DeviceRecord {
    std::uint32_t statusFlags; ///< kept by the provider: bits 0 and 12 mark a port that is down
    std::uint32_t handle;      ///< first argument of the handle-based calls
    std::uint16_t deviceNumber;
    std::uint8_t reserved10[4];
    std::uint16_t pciDeviceId;          ///< input of the chip index
    std::uint16_t pciSubsystemVendorId; ///< SSVID
    std::uint16_t pciSubsystemDeviceId; ///< SSDID
    std::uint8_t reserved20[174];
    std::uint8_t nodeName[8]; ///< world wide node name
    std::uint8_t reserved202[80];
    char modelName[32];
    char serialNumber[32]; ///< three binary bytes in chips below index 8, text in the others
    char driverVersion[32];
    char driverFirmwareVersion[32];
    char optionRomBiosVersion[32];
    std::uint8_t reserved442[2];
    std::uint16_t transceiverReadable; ///< a transceiver is read only when this is 1
    std::uint8_t reserved446[8];
    std::uint8_t optionRomFlags; ///< bit 0 firmware, bit 1 EFI, bit 2 FCode version valid
    std::uint8_t reserved455[3];
    std::uint8_t firmwareVersion[3]; ///< major, minor, sub-minor
    std::uint8_t reserved461;
    std::uint8_t efiVersion[2]; ///< major, minor
    std::uint8_t reserved464[2];
    std::uint8_t fcodeVersion[3]; ///< major, minor, sub-minor
    std::uint8_t reserved469[113];
    TAVIK_PortPropertyBlock portProperty; ///< rewritten by the provider through TAVIK_GetHbaDevicePortProperty
    std::uint32_t ioCount;                ///< this and the other counters are valid after TAVIK_RefreshDeviceStats
    std::uint32_t megabyteCount;
    std::uint32_t lipCount;
    std::uint8_t reserved748[4];
    std::uint32_t linkFailures;
    std::uint32_t lossOfSync;
    std::uint32_t lossOfSignal;
    std::uint32_t primitiveSequenceErrors;
    std::uint32_t invalidTransmissionWords;
    std::uint32_t crcErrors;
    std::uint8_t reserved776[732];
    std::uint8_t eNodeMac[6]; ///< FCoE ENode MAC address, converged functions only
    std::uint8_t reserved1514[446];
    std::uint32_t targetCount; ///< as the library counts; the chain may be longer or shorter
    TAVIK_TargetEntry* firstTarget;
    std::uint8_t reserved1972[256];
};

/** The card as its Ethernet function sees it. Texts are terminated within the space up to the next field. */
struct TAVIK_CardProperties {
    std::uint8_t wwn[6]; ///< world wide identifier bytes of the adapter
    std::uint8_t reserved10[2];
    char manufacturer[64];
    char modelName[32];
    char serialNumber[192]; ///< equal to the serial number of the card's TAVIK_AdapterEntry
    char driverVersion[32]; ///< network driver version
    char defaultSoftwareVersion[160];
    char flashVersion[312];
    char defaultFruNumber[128];
};

struct TAVIK_LinkProperties {
    std::uint64_t speed; ///< 10000 stands for ten gigabit
    std::uint32_t state; ///< 1 up, 2 down, 3 testing; any other value is unknown
    std::uint8_t reserved12[156];
};

struct TAVIK_PortProperties {
    std::uint8_t reserved0[8];
    std::uint8_t macAddress[6];
    std::uint8_t reserved14[2]; ///< compared with the address where eight bytes are compared
    std::uint8_t reserved16[40];
    char deviceName[128]; ///< handle of every per-port call
    std::uint32_t portId;
    std::uint8_t reserved188[12];
    TAVIK_LinkProperties link;
    std::uint8_t reserved368[4];
    std::uint32_t mtu; ///< maximum transmission unit in bytes
    std::uint8_t reserved376[496];
};

/** A TAVIK_ProtocolEntry of type 2 read from its start. */
struct TAVIK_NicFunction {
    std::uint32_t adapterId; ///< entries of one card share it
    TAVIK_CardProperties card;
    std::uint8_t functionData[6396]; ///< vital product data items: a 32-bit count and the items behind it
    TAVIK_PortProperties port;
    std::uint8_t reserved8200[168];
    std::uint8_t portExtension[960];
    std::uint8_t reserved9328[1123];
};

/** A TAVIK_ProtocolEntry of type 0 or 1 read from its start. */
struct TAVIK_StorageFunction {
    std::uint8_t headerNodeName[8];
    std::uint8_t headerPortName[8];
    TAVIK_DeviceRecord device;
    std::uint8_t reserved2244[8207];
};

enum TAVIK_ProtocolType : std::uint32_t {
    TAVIK_ProtocolFibreChannel = 0,
    TAVIK_ProtocolFCoE = 1,
    TAVIK_ProtocolNic = 2,
};

struct TAVIK_ProtocolEntry {
    union {
        TAVIK_StorageFunction storage; ///< types 0 and 1
        TAVIK_NicFunction nic;         ///< type 2
    };
    std::uint32_t type; ///< TAVIK_ProtocolType; entries of any other value are passed over
    TAVIK_ProtocolEntry* next;
};

struct TAVIK_ProtocolList {
    std::uint8_t reserved0[4];
    TAVIK_ProtocolEntry* first;
};

struct TAVIK_PhyPortEntry {
    std::uint8_t portNumber; ///< port number on the adapter
    std::uint8_t reserved1[2];
    TAVIK_ProtocolList* protocols; ///< may be null: the chain of ports still goes on
    TAVIK_PhyPortEntry* next;
};

struct TAVIK_PhyPortList {
    std::uint8_t reserved0[4];
    TAVIK_PhyPortEntry* first;
};

struct TAVIK_AdapterEntry {
    char serialNumber[32]; ///< text of the card, the same for all its ports
    std::uint32_t kind;    ///< 1, 2, 3: storage-only kinds; any other value: a converged adapter
    std::uint8_t reserved36[88];
    char version[32];
    char modelName[5784];
    TAVIK_PhyPortList* phyPorts; ///< may be null: the adapter still counts as a card
    TAVIK_AdapterEntry* next;
};

struct TAVIK_AdapterList {
    std::uint8_t reserved0[4];
    TAVIK_AdapterEntry* first;
};

struct TAVIK_IPAddress {
    std::uint8_t address[16]; ///< network byte order; IPv4 uses the first four
    std::uint8_t family;      ///< 1 IPv4, 2 IPv6; any other value: none
    std::uint8_t reserved17[7];
};

struct TAVIK_IPProperties {
    std::uint8_t reserved0[8];
    TAVIK_IPAddress ipv4;
    TAVIK_IPAddress ipv4Mask;
    std::uint8_t reserved56[48];
    std::uint32_t firstCount; ///< IPv6 addresses
    std::uint32_t secondCount;
    std::uint32_t thirdCount;
    std::uint8_t reserved116[36];
    TAVIK_IPAddress* firstList; ///< released together with the block
    TAVIK_IPAddress* secondList;
    TAVIK_IPAddress* thirdList;
    std::uint8_t reserved176[152];
};

/** One Fibre Channel over Ethernet linkage of a port. */
struct TAVIK_FCoELinkage {
    std::uint8_t wwn[8];
    std::uint8_t reserved8[40];
    std::uint8_t fcPortId[3];
    std::uint8_t reserved51[5];
    std::uint8_t eNodeMac[6];
    std::uint8_t reserved62[26];
};

#pragma pack(pop)

#define TAVIK_PLACE(type, member, offset) static_assert(offsetof(type, member) == (offset), #type "." #member)
#define TAVIK_SIZE(type, size) static_assert(sizeof(type) == (size), #type)

TAVIK_PLACE(TAVIK_AdapterList, first, 4);
TAVIK_PLACE(TAVIK_AdapterEntry, kind, 32);
TAVIK_PLACE(TAVIK_AdapterEntry, version, 124);
TAVIK_PLACE(TAVIK_AdapterEntry, modelName, 156);
TAVIK_PLACE(TAVIK_AdapterEntry, phyPorts, 5940);
TAVIK_PLACE(TAVIK_AdapterEntry, next, 5948);
TAVIK_PLACE(TAVIK_PhyPortList, first, 4);
TAVIK_PLACE(TAVIK_PhyPortEntry, protocols, 3);
TAVIK_PLACE(TAVIK_PhyPortEntry, next, 11);
TAVIK_PLACE(TAVIK_ProtocolList, first, 4);
TAVIK_PLACE(TAVIK_ProtocolEntry, type, 10451);
TAVIK_PLACE(TAVIK_ProtocolEntry, next, 10455);
TAVIK_PLACE(TAVIK_StorageFunction, headerPortName, 8);
TAVIK_PLACE(TAVIK_StorageFunction, device, 16);
TAVIK_PLACE(TAVIK_DeviceRecord, handle, 4);
TAVIK_PLACE(TAVIK_DeviceRecord, deviceNumber, 8);
TAVIK_PLACE(TAVIK_DeviceRecord, pciDeviceId, 14);
TAVIK_PLACE(TAVIK_DeviceRecord, pciSubsystemVendorId, 16);
TAVIK_PLACE(TAVIK_DeviceRecord, pciSubsystemDeviceId, 18);
TAVIK_PLACE(TAVIK_DeviceRecord, nodeName, 194);
TAVIK_PLACE(TAVIK_DeviceRecord, modelName, 282);
TAVIK_PLACE(TAVIK_DeviceRecord, serialNumber, 314);
TAVIK_PLACE(TAVIK_DeviceRecord, driverVersion, 346);
TAVIK_PLACE(TAVIK_DeviceRecord, driverFirmwareVersion, 378);
TAVIK_PLACE(TAVIK_DeviceRecord, optionRomBiosVersion, 410);
TAVIK_PLACE(TAVIK_DeviceRecord, transceiverReadable, 444);
TAVIK_PLACE(TAVIK_DeviceRecord, optionRomFlags, 454);
TAVIK_PLACE(TAVIK_DeviceRecord, firmwareVersion, 458);
TAVIK_PLACE(TAVIK_DeviceRecord, efiVersion, 462);
TAVIK_PLACE(TAVIK_DeviceRecord, fcodeVersion, 466);
TAVIK_PLACE(TAVIK_DeviceRecord, portProperty, 582);
TAVIK_PLACE(TAVIK_DeviceRecord, ioCount, 736);
TAVIK_PLACE(TAVIK_DeviceRecord, megabyteCount, 740);
TAVIK_PLACE(TAVIK_DeviceRecord, lipCount, 744);
TAVIK_PLACE(TAVIK_DeviceRecord, linkFailures, 752);
TAVIK_PLACE(TAVIK_DeviceRecord, lossOfSync, 756);
TAVIK_PLACE(TAVIK_DeviceRecord, lossOfSignal, 760);
TAVIK_PLACE(TAVIK_DeviceRecord, primitiveSequenceErrors, 764);
TAVIK_PLACE(TAVIK_DeviceRecord, invalidTransmissionWords, 768);
TAVIK_PLACE(TAVIK_DeviceRecord, crcErrors, 772);
TAVIK_PLACE(TAVIK_DeviceRecord, eNodeMac, 1508);
TAVIK_PLACE(TAVIK_DeviceRecord, targetCount, 1960);
TAVIK_PLACE(TAVIK_DeviceRecord, firstTarget, 1964);
TAVIK_PLACE(TAVIK_PortPropertyBlock, portType, 11);
TAVIK_PLACE(TAVIK_PortPropertyBlock, portState, 12);
TAVIK_PLACE(TAVIK_PortPropertyBlock, speedCode, 50);
TAVIK_PLACE(TAVIK_PortPropertyBlock, transceiverKind, 54);
TAVIK_SIZE(TAVIK_PortPropertyBlock, 154);
TAVIK_PLACE(TAVIK_TargetEntry, portName, 8);
TAVIK_PLACE(TAVIK_TargetEntry, lunCount, 215);
TAVIK_PLACE(TAVIK_TargetEntry, firstLun, 219);
TAVIK_PLACE(TAVIK_TargetEntry, next, 315);
TAVIK_PLACE(TAVIK_LunEntry, vendorId, 14);
TAVIK_PLACE(TAVIK_LunEntry, productId, 22);
TAVIK_PLACE(TAVIK_LunEntry, productRevision, 38);
TAVIK_PLACE(TAVIK_LunEntry, identifier, 43);
TAVIK_PLACE(TAVIK_LunEntry, identifierLength, 75);
TAVIK_PLACE(TAVIK_LunEntry, blockSize, 84);
TAVIK_PLACE(TAVIK_LunEntry, osName, 92);
TAVIK_PLACE(TAVIK_LunEntry, next, 360);
TAVIK_PLACE(TAVIK_NicFunction, card, 4);
TAVIK_PLACE(TAVIK_NicFunction, card.manufacturer, 12);
TAVIK_PLACE(TAVIK_NicFunction, card.modelName, 76);
TAVIK_PLACE(TAVIK_NicFunction, card.serialNumber, 108);
TAVIK_PLACE(TAVIK_NicFunction, card.driverVersion, 300);
TAVIK_PLACE(TAVIK_NicFunction, card.defaultSoftwareVersion, 332);
TAVIK_PLACE(TAVIK_NicFunction, card.flashVersion, 492);
TAVIK_PLACE(TAVIK_NicFunction, card.defaultFruNumber, 804);
TAVIK_SIZE(TAVIK_CardProperties, 928);
TAVIK_PLACE(TAVIK_NicFunction, functionData, 932);
TAVIK_PLACE(TAVIK_NicFunction, port, 7328);
TAVIK_PLACE(TAVIK_NicFunction, port.macAddress, 7336);
TAVIK_PLACE(TAVIK_NicFunction, portExtension, 8368);
TAVIK_SIZE(TAVIK_NicFunction, 10451);
TAVIK_SIZE(TAVIK_StorageFunction, 10451);
TAVIK_PLACE(TAVIK_PortProperties, macAddress, 8);
TAVIK_PLACE(TAVIK_PortProperties, deviceName, 56);
TAVIK_PLACE(TAVIK_PortProperties, portId, 184);
TAVIK_PLACE(TAVIK_PortProperties, link, 200);
TAVIK_PLACE(TAVIK_PortProperties, mtu, 372);
TAVIK_SIZE(TAVIK_PortProperties, 872);
TAVIK_PLACE(TAVIK_LinkProperties, state, 8);
TAVIK_SIZE(TAVIK_LinkProperties, 168);
TAVIK_PLACE(TAVIK_IPProperties, ipv4, 8);
TAVIK_PLACE(TAVIK_IPProperties, ipv4Mask, 32);
TAVIK_PLACE(TAVIK_IPProperties, firstCount, 104);
TAVIK_PLACE(TAVIK_IPProperties, firstList, 152);
TAVIK_SIZE(TAVIK_IPProperties, 328);
TAVIK_PLACE(TAVIK_IPAddress, family, 16);
TAVIK_SIZE(TAVIK_IPAddress, 24);
TAVIK_PLACE(TAVIK_FCoELinkage, fcPortId, 48);
TAVIK_PLACE(TAVIK_FCoELinkage, eNodeMac, 56);
TAVIK_SIZE(TAVIK_FCoELinkage, 88);

#undef TAVIK_PLACE
#undef TAVIK_SIZE

/** Alarm callback: device number, alarm type (0: a port changed state), a parameter and a text. Called on the
 *  library's own thread; the result is ignored. The text is the library's and valid during the call. */
typedef int (*TAVIK_AlarmCallback)(std::uint32_t deviceNumber, std::uint32_t coreAlarmType, std::uint32_t rsltParam,
                                   const char* stringParameter);

// Every call returns 0 for success and any other value for failure, unless it says otherwise. Two calls never meet, but
// for those that say so, which the polling thread makes while requests make theirs, and the alarm callback.

/** Call once before everything else. @param logMask 31 switches the library's log on, 0 off. @param reserved 0. */
std::uint32_t TAVIK_Initialize(std::uint32_t logMask, std::uint32_t reserved);
/** Ends the library: no record of it may be read afterwards. */
std::uint32_t TAVIK_Uninitialize(void);

/** The main tree, or null when the library has none. Records stay valid until the next swap. */
TAVIK_AdapterList* TAVIK_GetAdapterList(void);
/** Non-zero if adapters changed since the last reset. Meets any other call. */
std::uint32_t TAVIK_DidConfigChange(void);
std::uint32_t TAVIK_ResetConfigChange(void); ///< Meets any other call.
/** Fills the second tree from the hardware. Slow; leaves the main tree alone. Meets any other but flash calls. */
std::uint32_t TAVIK_UpdateBackupAdapterList(void);
/** Makes the second tree the main one; records of the old main tree are gone. */
std::uint32_t TAVIK_SwapBackupToMainAdapterList(void);

std::uint32_t TAVIK_RegisterAlarmNotificationCallback(TAVIK_AlarmCallback callback);
std::uint32_t TAVIK_UnRegisterAlarmNotificationCallback(TAVIK_AlarmCallback callback);

/** Fills the block with the port's current property. @param reserved 0. */
std::uint32_t TAVIK_GetHbaDevicePortProperty(std::uint32_t handle, std::uint32_t reserved,
                                             TAVIK_PortPropertyBlock* block);
/** Reads the vital product data. @param size in: bytes of the buffer, out: bytes delivered. @param reserved 0. */
std::uint32_t TAVIK_GetVpd(std::uint32_t handle, std::uint32_t reserved, void* buffer, std::uint32_t* size);
/** @param text receives a text that the caller gives back through TAVIK_FreeMem. */
std::uint32_t TAVIK_GetUUIDFromI2CVPD(TAVIK_DeviceRecord* device, char** text, std::uint32_t* size);
/** Refreshes the statistics fields of the record in place. */
std::uint32_t TAVIK_RefreshDeviceStats(TAVIK_DeviceRecord* device);
/** @param buffer 512 bytes: page A0 (serial ID, SFF-8472), then page A2 (diagnostics). */
std::uint32_t TAVIK_GetSFPData(TAVIK_DeviceRecord* device, void* buffer);
/** @param size in: bytes of the buffer, out: bytes written. */
std::uint32_t TAVIK_GetOSName(char* buffer, std::uint32_t* size);

std::uint32_t TAVIK_GetLinkProperties(const char* deviceName, TAVIK_LinkProperties* link);
/** @param properties receives a block that the caller gives back through TAVIK_FreeMem, lists included. */
std::uint32_t TAVIK_GetIPProperties(const char* deviceName, TAVIK_IPProperties** properties);
/** @param linkage receives an array that the caller gives back through TAVIK_FreeMem; *count may be 0. */
std::uint32_t TAVIK_GetFCoELinkage(const char* deviceName, TAVIK_FCoELinkage** linkage, std::uint32_t* count);
/** Serial ID bytes of the port's transceiver (SFF-8472). @param size in: bytes of the buffer, out: bytes delivered.
 *  Failure means that the port has no transceiver. */
std::uint32_t TAVIK_GetTransceiverDMIData(const char* deviceName, std::uint32_t* size, void* buffer);
/** @param text receives the multi-boot image version; the caller gives it back through TAVIK_FreeMem. */
std::uint32_t TAVIK_GetMBIVersionString(TAVIK_DeviceRecord* device, char** text, std::uint32_t* length);

/** Writes an image to the flash of the adapter and returns when that is finished. @param reserved 0. */
std::uint32_t TAVIK_UpdateFlash(std::uint32_t adapterId, const void* image, std::uintptr_t reserved);
/** Writes the named file to the flash of the device's adapter. @param reserved 0. */
std::uint32_t TAVIK_doOptionROMUpdate(TAVIK_DeviceRecord* device, const char* fileName, std::uintptr_t reserved);

/** Releases memory that the library allocated for the caller. */
std::uint32_t TAVIK_FreeMem(void* memory);

} // extern "C"
