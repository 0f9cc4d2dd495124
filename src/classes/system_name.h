// The host's name as all instances carry it.
#pragma once

#include <cstdint>

namespace merolt {

/// Value of the key SystemName on all instances. Set once at the start of the polling thread.
extern char gSystemName[256];
/// How the name was found: 2 computer name, 4 or 6 address text.
extern std::uint32_t gSystemNameFormat;

/// Reads the name that the administrator wants, once, when the provider is constructed. One that keys cannot carry is
/// told in the error log and counts as none.
void readWantedSystemName();

/// Fills `name` (256 bytes) with the name that the administrator wants; else with the first address that name
/// resolution gives for this host, or with the computer name where there is none.
/// @param format receives 2, 4 or 6; left alone for an address of another length.
void getSystemName(char* name, std::uint32_t* format);

/// The host's name as the records of one build of a list bear it: looked up for the first of them, and not gSystemName,
/// which is as old as the polling thread.
class SystemNameOfBuild {
public:
    const char* text();

private:
    char name[sizeof(gSystemName)] = "";
    bool isLookedUp = false;
};

} // namespace merolt
