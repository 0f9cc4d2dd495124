// Where the host's messages go.
#pragma once

#include <functional>
#include <string_view>

namespace cimhost {

enum class LogLevel { trace, information, warning, error };

/// Called from any thread, also from several at once; must not throw. An empty sink drops the message.
using LogSink = std::function<void(LogLevel, std::string_view)>;

} // namespace cimhost
