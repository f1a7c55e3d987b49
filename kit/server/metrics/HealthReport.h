#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "SettingsHandlerKit/StorageObserver.h"
#include "server/web/HttpResponse.h"

namespace SettingsHandlerKit {

/// More members of the response; those without texts are left out.
using HealthTexts = std::map<std::string, std::function<std::vector<std::string>()>>;

/// The response of `/healthz`:
/// `{"status":"ok","version":"1.2.3","uptimeSeconds":12,"storage":{"writable":true,"keys":3,"failures":0}}`, with
/// "lastFailure" once there was one. The status is "degraded" while changes do not reach the database, and otherwise
/// "recovered" until the next start when the database was damaged at this one: "recoveredFrom" then says whether a
/// "backup" or "defaults" took its place, and "setAside" is the new name of the damaged file.
class HealthReport {
public:
    HealthReport(std::string version, Recovery recoveryAtStart);

    /// Does the host serve? At first it does not.
    void setServing(bool isServing) { serving = isServing; }

    /// 200 while the host serves, else 503.
    HttpResponse response(const StorageHealth& storage, const HealthTexts& more = {}) const;

private:
    const char* status(const StorageHealth& storage) const;

    std::string hostVersion;
    Recovery recovery;
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
    bool serving = false;
};

}  // namespace SettingsHandlerKit
