// Where a command that loads the provider for one question keeps the provider's log and settings.
#pragma once

namespace cimhost::cli {

/// Gives the provider an install location of this user's own: cimhost in XDG_STATE_HOME or ~/.local/state, made with
/// its folder log, for the user alone. Otherwise its log would lie wherever a command is started. What the environment
/// says of the install location stays. A folder that cannot be made, or is somebody else's, is not used, and then
/// nothing is logged. Before the provider is loaded, and before there are threads.
void useOwnInstallLocation();

} // namespace cimhost::cli
