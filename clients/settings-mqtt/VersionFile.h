#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Versions.h"
#include "bridge/Log.h"
#include "bridge/Loop.h"

namespace SettingsMqtt {

/// Keeps `Versions` in a file, which is replaced as a whole: after a power cut it is the old or the new one. The loop
/// has it stored: a version before the next wait, values some seconds later.
class VersionFile : public SettingsBridge::Source {
public:
    /// Reads the file, if there is one. Creates the folder if it is missing, for its user alone.
    /// Errors: `std::runtime_error`.
    VersionFile(std::string stateFolder, const SettingsBridge::Log& programLog);

    const std::shared_ptr<Versions>& versions() const { return kept; }

    Wanted wanted() override;
    /// Stores what is not stored. Errors are logged, not thrown: the bridge goes on with what it has in memory.
    void process(short events) override;

private:
    VersionRecords load() const;
    void store(const VersionRecords& records) const;

    const std::string folder;
    const std::string path;
    const SettingsBridge::Log& log;
    const std::shared_ptr<Versions> kept;
    std::optional<Time> due;
};

}  // namespace SettingsMqtt
