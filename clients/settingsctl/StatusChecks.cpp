#include <algorithm>
#include <cstdint>

#include "Checks.h"
#include "Times.h"
#include "Version.h"
#include "Wire/HostFrame.h"
#include "Wire/QueryFrames.h"

namespace SettingsCtl {

namespace {

constexpr std::int64_t kibibyte = 1024;
constexpr std::int64_t mebibyte = kibibyte * kibibyte;
/// Enough for the database at its largest, its log and both backups.
constexpr std::int64_t enoughSpace = 16 * mebibyte;
/// 2024-01-01. A clock that shows less was never set.
constexpr std::int64_t earliestNow = 1704067200000;

Finding checkVersions(const std::string& host, const std::string& wire) {
    const std::string found = "host " + host + ", wire " + wire;
    if (host == ownVersion() && wire == Wire::version) {
        return {"versions", true, found};
    }
    return {"versions", false,
            found + "; settingsctl " + ownVersion() + ", wire " + Wire::version +
                ": restart the host after an update, or install both in the same version"};
}

Finding checkStorage(const Wire::HostFrame& status, const std::string& health) {
    const auto lastFailure = status.textAt({"health", "storage", "lastFailure"});
    const std::string because = lastFailure ? " (" + *lastFailure + ")" : "";
    if (health == "ok") {
        const auto keys = status.integerAt({"health", "storage", "keys"});
        const auto failures = status.integerAt({"health", "storage", "failures"}).value_or(0);
        return {"storage", true,
                "values stored: " + std::to_string(keys.value_or(0)) +
                    ", operations failed since the start: " + std::to_string(failures) + because};
    }
    if (health == "degraded") {
        return {"storage", false,
                "changes do not reach the disk" + because + ": see the host's log, and check the disk"};
    }
    if (health == "recovered") {
        return {"storage", false,
                "the database was damaged or missing, values are those of " +
                    status.textAt({"health", "storage", "recoveredFrom"}).value_or("a replacement") +
                    ": check the settings and the disk, then restart the host"};
    }
    return {"storage", false, "the host says '" + health + "': see its log"};
}

std::string inMebibytes(std::int64_t bytes) {
    return std::to_string(bytes / mebibyte) + " MiB";
}

Finding checkDisk(std::int64_t free, std::int64_t total) {
    const std::string found = inMebibytes(free) + " of " + inMebibytes(total) + " free";
    if (free < enoughSpace) {
        return {"disk", false, found + ": free " + inMebibytes(enoughSpace) + ", or changes will be refused"};
    }
    return {"disk", true, found};
}

Finding checkClock(const Wire::HostFrame& status, std::int64_t now) {
    const std::string found = "the host's clock reads " + localTime(now);
    if (now < earliestNow) {
        return {"clock", false, found + ": set the clock"};
    }
    const auto newest = status.integersAt({"newest"});
    const auto ahead =
        std::find_if(newest.begin(), newest.end(), [now](const auto& entry) { return entry.second > now; });
    if (ahead == newest.end()) {
        return {"clock", true, found};
    }
    const std::string what = ahead->first.empty() ? "a setting that is not in the catalogue" : "'" + ahead->first + "'";
    return {"clock", false,
            found + ", but " + what + " has a time stamp in the future (" + localTime(ahead->second) +
                "), so changes of it are refused until then: set the clock, or use 'settingsctl set --force'"};
}

}  // namespace

std::string ownVersion() {
    // "settingsctl 1.1.0 (commit …)".
    const std::string text = versionText();
    const std::size_t begin = text.find(' ') + 1;
    return text.substr(begin, text.find(' ', begin) - begin);
}

Findings checkStatus(const std::string& status) {
    const Wire::HostFrame object(status);
    Findings findings{checkVersions(object.textAt({"versions", "host"}).value_or("unknown"),
                                    object.textAt({"versions", "wire"}).value_or("unknown"))};
    if (const auto health = object.textAt({"health", "status"})) {
        findings.push_back(checkStorage(object, *health));
    }
    const auto free = object.integerAt({"disk", "free"});
    const auto total = object.integerAt({"disk", "total"});
    if (free && total) {
        findings.push_back(checkDisk(*free, *total));
    }
    if (const auto now = object.integerAt({"now"})) {
        findings.push_back(checkClock(object, *now));
    }
    return findings;
}

Finding checkPages(const std::optional<std::string>& address) {
    if (!address) {
        return {"pages", false, "the host serves none: start it without --no-web, and with --pages DIR"};
    }
    // The key is left out: people show this output to others.
    return {"pages", true, address->substr(0, address->find('?'))};
}

}  // namespace SettingsCtl
