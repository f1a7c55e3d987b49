#include "server/metrics/HealthReport.h"

#include <utility>

#include "Wire/ObjectWriter.h"

namespace SettingsHandlerKit {

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

HttpResponse HealthReport::response(const StorageHealth& storage, const HealthTexts& more) const {
    const auto uptime = std::chrono::steady_clock::now() - started;
    Wire::ObjectWriter<> report;
    report.text("status", status(storage));
    report.text("version", hostVersion);
    report.number("uptimeSeconds", std::chrono::duration_cast<std::chrono::seconds>(uptime).count());
    report.beginObject("storage");
    report.boolean("writable", storage.writable);
    report.number("keys", storage.keys);
    report.number("failures", storage.failures);
    if (!storage.lastFailure.empty()) {
        report.text("lastFailure", storage.lastFailure);
    }
    if (recovery.source != Recovery::Source::NOT_NEEDED) {
        report.text("recoveredFrom", recovery.source == Recovery::Source::BACKUP ? "backup" : "defaults");
    }
    if (!recovery.setAside.empty()) {
        report.text("setAside", recovery.setAside);
    }
    report.endObject();
    for (const auto& [name, textsOf] : more) {
        if (const auto texts = textsOf(); !texts.empty()) {
            report.texts(name, texts);
        }
    }
    HttpResponse response;
    response.status = serving ? ok : serviceUnavailable;
    response.contentType = "application/json";
    response.body = std::make_shared<const std::string>(report.finish());
    return response;
}

}  // namespace SettingsHandlerKit
