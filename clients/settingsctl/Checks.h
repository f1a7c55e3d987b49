#pragma once

#include <optional>
#include <string>
#include <vector>

namespace SettingsCtl {

/// What `doctor` found out.
struct Finding {
    /// What was checked: "socket".
    std::string check;
    bool ok = false;
    /// What it is like; when it is not ok, also what to do.
    std::string text;
};

using Findings = std::vector<Finding>;

/// The host's socket, if there is one, and its folder: others must not be able to use or replace it.
Findings checkSocket(const std::string& check, const std::string& path);

/// Versions, storage, disk and clock by what a host says of its state, the JSON text of one object. Nothing is said of
/// members that are missing: a service of somebody else may have no storage.
Findings checkStatus(const std::string& status);

/// Where the bridges of this machine are looked for.
struct BridgePlaces {
    /// The value of PATH.
    std::string searchPath;
    /// Each may have a folder of the bridge with its status file.
    std::vector<std::string> runtimeFolders;
};

/// A bridge to another protocol, by its program's name: whether it is installed, runs and is connected. One that does
/// not run is not wrong: it is optional, and a bus starts its own.
Finding checkBridge(const std::string& program, const BridgePlaces& places);

/// The settings pages at `address`, with or without its key; nothing: the host serves none.
Finding checkPages(const std::optional<std::string>& address);

/// "1.1.0".
std::string ownVersion();

}  // namespace SettingsCtl
