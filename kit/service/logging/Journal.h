#pragma once

#include <memory>
#include <optional>
#include <string>

#include "service/logging/LogLine.h"
#include "service/logging/RequestContext.h"

namespace SettingsHost {

/// Does standard error lead to the system's journal? Then lines can go there with their parts kept apart.
bool isStandardErrorTheJournal();

/// One entry in the journal's native protocol: MESSAGE, with control characters escaped, PRIORITY as in syslog,
/// SYSLOG_IDENTIFIER, and while a request is in hand REQUEST_TYPE, and SETTING_KEY when it is about a setting.
std::string journalEntry(const LogLine& line, const std::optional<CurrentRequest>& request);

/// A way to the journal that never waits for it.
class Journal {
public:
    explicit Journal(std::string socketPath = "/run/systemd/journal/socket");
    ~Journal();

    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Returns: false when the journal has no room now or is not there; the entry is lost.
    bool send(const std::string& entry);

private:
    std::string path;
    int descriptor;
};

}  // namespace SettingsHost
