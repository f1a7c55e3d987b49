#pragma once

namespace VessaLogger {
class Log;
}
namespace Metrics {
class MetricsCache;
}

/// The singletons of the component libraries. They are requested once, while the library is loaded, after the tables
/// and the constants are built. Defined in SettingsNames.cpp.
namespace SettingsHandler {

extern VessaLogger::Log& logger;
extern Metrics::MetricsCache& metricsCache;

}  // namespace SettingsHandler
