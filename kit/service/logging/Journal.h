#pragma once

#include <memory>
#include <optional>
#include <string>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

/// Is standard error connected to systemd's journal? Then entries with fields can be sent to it.
bool isStandardErrorTheJournal();

/// An entry in the journal's native protocol: MESSAGE, with control characters escaped, PRIORITY as in syslog,
/// SYSLOG_IDENTIFIER; while a request is handled REQUEST_TYPE, and SETTING_KEY if the request names a setting.
std::string journalEntry(const LogLine& line, const std::optional<CurrentRequest>& request);

/// Sends entries to the journal; never blocks.
class Journal {
public:
    explicit Journal(std::string socketPath = "/run/systemd/journal/socket");
    ~Journal();

    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Returns: false when the journal is full or does not run; the entry is lost.
    bool send(const std::string& entry);

private:
    std::string path;
    int descriptor;
};

}  // namespace SettingsHandlerKit
