#include "Versions.h"

#include <algorithm>

namespace SettingsMqtt {

namespace {

constexpr std::uint64_t never = 0;
constexpr std::uint64_t changedSince = 1;

/// FNV-1a, the same in every build.
std::uint64_t fingerprintOf(const std::optional<std::string>& value) {
    std::uint64_t hash = value ? 0xcbf29ce484222325U : changedSince;
    for (const char byte : value.value_or("")) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    return std::max(hash, changedSince + 1);
}

}  // namespace

Versions::Verdict Versions::judge(const std::string& key, std::int64_t version, bool retained) {
    const VersionRecord& record = records[key];
    if (version <= record.version) {
        return Verdict::OLD;
    }
    return retained && record.agreed == changedSince ? Verdict::CHANGED_SINCE : Verdict::APPLY;
}

void Versions::valueIs(const std::string& key, const std::optional<std::string>& value, bool byBridge) {
    VersionRecord& record = records[key];
    record.current = fingerprintOf(value);
    // A device without records has nothing to lose.
    if (record.agreed == never || (byBridge && record.agreed != changedSince)) {
        record.agreed = record.current;
    } else if (!isAgreed && record.agreed != record.current) {
        record.agreed = changedSince;
    }
}

void Versions::parted() {
    for (auto& [key, record] : records) {
        record.agreed = agreedNow(record);
    }
    isAgreed = false;
}

Versions::Unsaved Versions::unsaved() {
    Unsaved result = Unsaved::NOTHING;
    for (const auto& [key, record] : records) {
        const VersionRecord& other = stored[key];
        if (record.version != other.version) {
            return Unsaved::VERSIONS;
        }
        result = agreedNow(record) == other.agreed ? result : Unsaved::VALUES;
    }
    return result;
}

const VersionRecords& Versions::save() {
    stored = records;
    for (auto& [key, record] : stored) {
        record.agreed = agreedNow(record);
    }
    return stored;
}

}  // namespace SettingsMqtt
