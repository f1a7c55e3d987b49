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

/// The settings pages at `address`, with or without its key; nothing: the host serves none.
Finding checkPages(const std::optional<std::string>& address);

}  // namespace SettingsCtl
