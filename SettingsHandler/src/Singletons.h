#pragma once

namespace VessaLogger {
class Log;
}
namespace Metrics {
class MetricsCache;
}

/// The component libraries' one instance of each, asked for once while the library is loaded, after the catalogue and
/// the constants are built. Defined in SettingsNames.cpp.
namespace SettingsHandler {

extern VessaLogger::Log& logger;
extern Metrics::MetricsCache& metricsCache;

}  // namespace SettingsHandler
