#pragma once

#include <functional>
#include <memory>
#include <string>

#include "SettingsHandlerKit/Disk.h"
#include "SettingsHandlerKit/Environment.h"
#include "Television.h"
#include "simulation/Choices.h"
#include "simulation/Faults.h"
#include "simulation/HandledFrames.h"
#include "simulation/MemoryServer.h"

namespace SettingsSimulation {

/// The process of a host, composed as `settings-host` is: what is gone when it is killed.
class HostProcess {
public:
    /// What it asks of the system.
    struct Surroundings {
        Choices& choices;
        std::shared_ptr<SettingsHandlerKit::Disk> disk;
        std::function<void(std::chrono::milliseconds)> sleep;
        std::function<void()> restart;
        HandledFrames::Report report;
    };

    /// Opens the storage and serves. Errors: `DatabaseError`.
    explicit HostProcess(const Surroundings& surroundings);
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    SettingsHost::Faults& faults() { return *itsFaults; }
    MemoryServer& server() { return itsServer; }

private:
    SettingsHandlerKit::ServerOptions options(const Surroundings& surroundings);

    const std::shared_ptr<SettingsHost::Faults> itsFaults = std::make_shared<SettingsHost::Faults>();
    MemoryServer itsServer;
    SettingsHost::Television television;
    HandledFrames deviceFrames;
};

/// The folder and the file of the storage.
constexpr const char* storageFolder = "/simulated";
constexpr const char* storageFile = "/simulated/settings.db";

}  // namespace SettingsSimulation
