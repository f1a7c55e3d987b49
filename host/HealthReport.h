#pragma once

#include <chrono>
#include <string>

#include "web/HttpAnswer.h"

namespace SettingsHost {

/// What `/healthz` says: `{"status":"ok","version":"1.0.0","uptimeSeconds":12}` and the state of storage.
class HealthReport {
public:
    explicit HealthReport(std::string version);

    /// Does the host serve? Until told so it does not.
    void setServing(bool isServing) { serving = isServing; }

    /// 200 while the host serves, else 503.
    HttpAnswer answer() const;

private:
    std::string hostVersion;
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
    bool serving = false;
};

}  // namespace SettingsHost
