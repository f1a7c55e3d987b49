#pragma once

#include <string>

#include "Versions.h"
#include "bridge/Log.h"

namespace SettingsMqtt {

/// Records in a file, which is replaced as a whole: after a power cut it is the old or the new one.
class VersionFile {
public:
    /// Creates the folder if it is missing, for its user alone. Errors: `std::runtime_error`.
    VersionFile(std::string stateFolder, SettingsBridge::Log logger);

    /// Nothing from a file that is none of these.
    VersionRecords load() const;
    /// Errors are logged, not thrown: the bridge goes on with what it has in memory.
    void store(const VersionRecords& records) const;

private:
    const std::string folder;
    const std::string path;
    const SettingsBridge::Log log;
};

}  // namespace SettingsMqtt
