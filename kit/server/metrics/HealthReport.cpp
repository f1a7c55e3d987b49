#include "server/metrics/HealthReport.h"

#include <utility>

#include "Utils/Rapidjson.h"
#include "Wire/Utf8.h"

namespace SettingsHost {

namespace {

constexpr unsigned ok = 200;
constexpr unsigned serviceUnavailable = 503;

}  // namespace

HealthReport::HealthReport(std::string version, Recovery recoveryAtStart)
    : hostVersion(std::move(version)), recovery(std::move(recoveryAtStart)) {}

const char* HealthReport::status(const StorageHealth& storage) const {
    if (!serving) {
        return "not-serving";
    }
    if (!storage.writable) {
        return "degraded";
    }
    return recovery.source == Recovery::Source::NOT_NEEDED ? "ok" : "recovered";
}

HttpAnswer HealthReport::answer(const StorageHealth& storage) const {
    const auto uptime = std::chrono::steady_clock::now() - started;
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("status");
    writer.String(status(storage));
    writer.Key("version");
    writer.String(hostVersion);
    writer.Key("uptimeSeconds");
    writer.Int64(std::chrono::duration_cast<std::chrono::seconds>(uptime).count());
    writer.Key("storage");
    writer.StartObject();
    writer.Key("writable");
    writer.Bool(storage.writable);
    writer.Key("keys");
    writer.Uint64(storage.keys);
    writer.Key("failures");
    writer.Uint64(storage.failures);
    if (!storage.lastFailure.empty()) {
        writer.Key("lastFailure");
        writer.String(Wire::withValidUtf8(storage.lastFailure));
    }
    if (recovery.source != Recovery::Source::NOT_NEEDED) {
        writer.Key("recoveredFrom");
        writer.String(recovery.source == Recovery::Source::BACKUP ? "backup" : "defaults");
    }
    if (!recovery.setAside.empty()) {
        writer.Key("setAside");
        writer.String(Wire::withValidUtf8(recovery.setAside));
    }
    writer.EndObject();
    writer.EndObject();
    HttpAnswer answer;
    answer.status = serving ? ok : serviceUnavailable;
    answer.contentType = "application/json";
    answer.body = std::make_shared<const std::string>(buffer.GetString(), buffer.GetSize());
    return answer;
}

}  // namespace SettingsHost
