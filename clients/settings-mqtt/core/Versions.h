#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace SettingsMqtt {

/// What outlasts the bridge, one entry for each key that has anything to remember.
struct VersionRecord {
    /// The newest version of a desired value that was applied or refused; 0: none.
    std::int64_t version = 0;
    /// Fingerprint of the value when bridge and broker last agreed. 0: they never did; 1: it was changed at the device
    /// since then.
    std::uint64_t agreed = 0;
    /// That of the value now; not stored; 0: not known yet.
    std::uint64_t current = 0;
};

using VersionRecords = std::map<std::string, VersionRecord>;

/// Decides which desired values are applied. No clock takes part:
/// - Each version of a key is applied once, whichever topic it comes from; one that is not newer is not applied.
/// - A retained one is older than the subscription, nobody knows by how much. When the value was changed at the device
///   since the bridge last agreed with the broker, the change counts as the newer one.
class Versions {
public:
    /// `known` is what an earlier run has stored.
    explicit Versions(VersionRecords known = {}) : records(std::move(known)), stored(records) {}

    enum class Verdict { APPLY, OLD, CHANGED_SINCE };
    Verdict judge(const std::string& key, std::int64_t version, bool retained);
    /// The version is done with: applied, or refused for good.
    void settle(const std::string& key, std::int64_t version) { records[key].version = version; }

    /// The value of `key` is `value` now. `byBridge`: the bridge asked for it.
    void valueIs(const std::string& key, const std::optional<std::string>& value, bool byBridge = false);

    /// The broker has everything that the bridge had to tell, so all retained messages have arrived.
    void agreed() { isAgreed = true; }
    /// The connection to the broker is lost.
    void parted();

    /// What is not stored. Without the last changes of values, which can wait, the bridge is only more careful after a
    /// power cut; a version must not be applied twice.
    enum class Unsaved { NOTHING, VALUES, VERSIONS };
    Unsaved unsaved();
    /// The caller stores what this returns.
    const VersionRecords& save();

private:
    /// What to remember as agreed when the connection ends now.
    std::uint64_t agreedNow(const VersionRecord& record) const {
        return isAgreed && record.current != 0 ? record.current : record.agreed;
    }

    VersionRecords records;
    VersionRecords stored;
    bool isAgreed = false;
};

}  // namespace SettingsMqtt
