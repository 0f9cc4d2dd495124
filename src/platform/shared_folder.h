// Whether a name in a folder is this user's to decide, or whether others may put something in its place.
#pragma once

namespace merolt::platform {

/// Whether somebody else than this user and root may make files in the folder of that file: the folder is another
/// user's, or its group or everybody may write to it, with a sticky bit too. A folder that cannot be looked at counts.
bool othersMayMakeFilesBeside(const char* path);

} // namespace merolt::platform
