#pragma once

#include <functional>
#include <string>

#include "Versions.h"

namespace SettingsMqtt {

/// The records in a file, which is replaced as a whole: after a power cut it is the old or the new one.
class VersionFile : public VersionStore {
public:
    using Log = std::function<void(int level, const std::string& text)>;

    /// Creates the folder if it is missing, for its user alone. Errors: `std::runtime_error`.
    VersionFile(std::string stateFolder, Log logger);

    /// Nothing from a file that is none of these.
    VersionRecords load() override;
    void store(const VersionRecords& records) override;

private:
    const std::string folder;
    const std::string path;
    const Log log;
};

}  // namespace SettingsMqtt
