// The statuses that our library answers with. Callers test for zero only; the numbers help whoever reads a log.
#pragma once

#include "tavik/model.h"

namespace tavik {

inline constexpr Status statusOk = 0;
inline constexpr Status statusNotInitialized = 1;  ///< TAVIK_Initialize has not run, or the library has been ended
inline constexpr Status statusInvalidArgument = 2; ///< a null pointer, or memory that is not the library's
inline constexpr Status statusNoSuchDevice = 3;    ///< no function has this handle, adapter ID or device name
inline constexpr Status statusNoData = 4;          ///< the function has nothing of this kind
inline constexpr Status statusSourceFailed = 5;    ///< the source could not be read; standard error tells why
inline constexpr Status statusNotSupported = 6;    ///< the source cannot do this
inline constexpr Status statusReadOnly = 7;        ///< the source never writes: flash calls on a real host
inline constexpr Status statusAlreadyInitialized = 8;
inline constexpr Status statusNoBackup = 9;        ///< a swap without a filled second tree
inline constexpr Status statusWrongThread = 10;    ///< the call would wait for the thread it runs on
inline constexpr Status statusNotAnImage = 11;     ///< neither a flash image nor the absolute path of a file
inline constexpr Status statusDamagedImage = 12;   ///< truncated, changed on the way, or with fields that make no sense
inline constexpr Status statusForeignImage = 13;   ///< an image for another model of card
inline constexpr Status statusUnreadableFile = 14; ///< the flash file cannot be read; standard error tells why
inline constexpr Status statusWriteFailed = 15;    ///< the fleet cannot be written; standard error tells why
inline constexpr Status statusBusy = 16;           ///< another writer has kept the fleet to itself for too long
inline constexpr Status statusBufferTooSmall = 17; ///< nothing was written; the size tells what is needed

} // namespace tavik
