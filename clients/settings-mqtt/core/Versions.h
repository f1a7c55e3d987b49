#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace SettingsMqtt {

/// What outlasts the bridge, one entry for each key that has anything to remember.
struct VersionRecord {
    /// The newest version of a desired value that was applied or refused; 0: none.
    std::int64_t version = 0;
    /// Of the value when bridge and broker last agreed; 0: never.
    std::uint64_t fingerprint = 0;
    /// The value was changed at the device since then.
    bool changedAway = false;

    bool operator==(const VersionRecord& other) const {
        return version == other.version && fingerprint == other.fingerprint && changedAway == other.changedAway;
    }
};

using VersionRecords = std::map<std::string, VersionRecord>;

/// Keeps the records. The fleet's keeps them in memory.
class VersionStore {
public:
    virtual ~VersionStore() = default;
    virtual VersionRecords load() = 0;
    /// Errors are logged, not thrown: the bridge goes on with what it has in memory.
    virtual void store(const VersionRecords& records) = 0;
};

/// Decides which desired values are applied. No clock takes part:
/// - Each version of a key is applied once, whichever topic it comes from; one that is not newer is not applied.
/// - A retained one is older than the subscription, nobody knows by how much. When the value was changed at the device
///   since the bridge last agreed with the broker, the change counts as the newer one.
class Versions {
public:
    explicit Versions(std::shared_ptr<VersionStore> keeper);

    enum class Verdict { APPLY, OLD, CHANGED_SINCE };
    Verdict judge(const std::string& key, std::int64_t version, bool retained) const;
    /// The version is done with: applied, or refused for good.
    void settle(const std::string& key, std::int64_t version);

    /// The value of `key` is `value` now. `byBridge`: the bridge asked for it.
    void valueIs(const std::string& key, const std::optional<std::string>& value, bool byBridge = false);

    /// The broker has everything that the bridge had to tell, so all retained messages have arrived.
    void agreed();
    /// The connection to the broker is lost.
    void parted();

    /// What `save` would store. Without the last changes of values, which can wait, the bridge is only more careful
    /// after a power cut; a version must not be applied twice.
    enum class Unsaved { NOTHING, VALUES, VERSIONS };
    Unsaved unsaved() const { return unsavedPart; }
    void save();

private:
    VersionRecords snapshot() const;
    void valuesAreNew();

    std::shared_ptr<VersionStore> store;
    VersionRecords records;
    /// As the store has them.
    VersionRecords stored;
    /// Of the values now.
    std::map<std::string, std::uint64_t> fingerprints;
    bool isAgreed = false;
    Unsaved unsavedPart = Unsaved::NOTHING;
};

}  // namespace SettingsMqtt
