// TLS without an authority, for tests on this machine.
#pragma once

#include <filesystem>

namespace cimhost::testing_support {

/// Writes a certificate for localhost that signs itself, and its key, as PEM files. Valid for the hour that begins so
/// many seconds from now.
void makeCertificate(const std::filesystem::path& certificateFile, const std::filesystem::path& keyFile,
                     long beginsIn = 0);

} // namespace cimhost::testing_support
