#include "Versions.h"

#include <algorithm>
#include <utility>

namespace SettingsMqtt {

namespace {

/// FNV-1a, the same in every build; never 0.
std::uint64_t fingerprintOf(const std::optional<std::string>& value) {
    std::uint64_t hash = value ? 0xcbf29ce484222325U : 1;
    for (const char byte : value.value_or("")) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    return hash == 0 ? 1 : hash;
}

}  // namespace

Versions::Versions(std::shared_ptr<VersionStore> keeper)
    : store(std::move(keeper)), records(store->load()), stored(records) {}

Versions::Verdict Versions::judge(const std::string& key, std::int64_t version, bool retained) const {
    const auto found = records.find(key);
    const VersionRecord record = found == records.end() ? VersionRecord() : found->second;
    if (version <= record.version) {
        return Verdict::OLD;
    }
    return retained && record.changedAway ? Verdict::CHANGED_SINCE : Verdict::APPLY;
}

void Versions::settle(const std::string& key, std::int64_t version) {
    records[key].version = version;
    unsavedPart = Unsaved::VERSIONS;
}

void Versions::valueIs(const std::string& key, const std::optional<std::string>& value, bool byBridge) {
    const std::uint64_t fingerprint = fingerprintOf(value);
    VersionRecord& record = records[key];
    const auto known = fingerprints.find(key);
    // The first value of this run tells what changed while no bridge ran; a device without records has nothing to lose.
    const std::uint64_t before = known != fingerprints.end() ? known->second : record.fingerprint;
    fingerprints[key] = fingerprint;
    if (before != fingerprint) {
        valuesAreNew();
    }
    if (byBridge || before == 0) {
        record.fingerprint = fingerprint;
    } else if (!isAgreed && before != fingerprint) {
        record.changedAway = true;
    }
}

void Versions::agreed() {
    if (!isAgreed) {
        isAgreed = true;
        valuesAreNew();
    }
}

void Versions::valuesAreNew() {
    unsavedPart = std::max(unsavedPart, Unsaved::VALUES);
}

void Versions::parted() {
    if (isAgreed) {
        records = snapshot();
    }
    isAgreed = false;
}

VersionRecords Versions::snapshot() const {
    VersionRecords result = records;
    for (auto& [key, record] : result) {
        const auto fingerprint = fingerprints.find(key);
        if (isAgreed && fingerprint != fingerprints.end()) {
            record.fingerprint = fingerprint->second;
        }
        record.changedAway = record.changedAway && !isAgreed;
    }
    return result;
}

void Versions::save() {
    auto current = snapshot();
    unsavedPart = Unsaved::NOTHING;
    if (current != stored) {
        store->store(current);
        stored = std::move(current);
    }
}

}  // namespace SettingsMqtt
