// The way of an image into a converged card's flash, and what both installation services make of a URI.
#pragma once

#include "inventory/cna_list.h"

namespace merolt::flash {

/// The largest image that the Ethernet side takes, in bytes.
constexpr unsigned long long largestImage = 0x1000000;

/// The longest working directory that holds a local copy, and the room for the copy's name with its terminator.
constexpr std::size_t longestDirectory = 260;
constexpr std::size_t localNameRoom = longestDirectory + sizeof("/flash.bin");

/// The text behind a leading "file://" in any letter case; null if there is none.
const char* behindFileScheme(const char* uri);

/// Copies a file to flash.bin in the working directory, where it stays until the next update. A file above largestImage
/// is not copied, so that no call fills the disk while all others wait.
/// @param source the name of a local file.
/// @param localName localNameRoom bytes; receives the copy's name, or nothing if there is no such directory.
/// @return the file's size in bytes, or 0 on any failure.
unsigned long long downloadFlashFile(const char* source, char* localName);

/// Writes an image to the card and returns when that is done. Lists are left as they are: new versions show after the
/// next refresh.
/// @param image the image's bytes or the name of its file; the library tells which.
/// @return 0, or 2 if something is missing or the library fails.
std::uint32_t UpdateCNAFlashImage(CNACard* card, const void* image, unsigned long long size);

} // namespace merolt::flash
