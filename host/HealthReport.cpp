#include "HealthReport.h"

#include <utility>

#include "Utils/Rapidjson.h"

namespace SettingsHost {

namespace {

constexpr unsigned ok = 200;
constexpr unsigned serviceUnavailable = 503;

}  // namespace

HealthReport::HealthReport(std::string version) : hostVersion(std::move(version)) {}

HttpAnswer HealthReport::answer() const {
    const auto uptime = std::chrono::steady_clock::now() - started;
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("status");
    writer.String(serving ? "ok" : "not-serving");
    writer.Key("version");
    writer.String(hostVersion);
    writer.Key("uptimeSeconds");
    writer.Int64(std::chrono::duration_cast<std::chrono::seconds>(uptime).count());
    writer.EndObject();
    HttpAnswer answer;
    answer.status = serving ? ok : serviceUnavailable;
    answer.contentType = "application/json";
    answer.body = std::make_shared<const std::string>(buffer.GetString(), buffer.GetSize());
    return answer;
}

}  // namespace SettingsHost
