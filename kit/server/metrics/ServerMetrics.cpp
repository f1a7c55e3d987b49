#include "server/metrics/ServerMetrics.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include <prometheus/counter.h>
#include <prometheus/gauge.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>

#include "Wire/Catalogue.h"
#include "Wire/MessageType.h"
#include "Wire/RefusalCode.h"
#include "server/metrics/ProcessUsage.h"

namespace SettingsHandlerKit {

namespace {

using Names = std::vector<std::string>;

const std::string other = "other";

/// Settings that the voice SDK may refuse to apply. The event is sent all the same, and the change counted as "error",
/// too.
bool mayBeRefused(const std::string& key) {
    return key == "friendlyName" || key == "handsFreeAlwaysOnEnabled" || key == "pttAlwaysOnEnabled";
}

/// The value labels of changes of a setting: the values of its choice, never a text that a person typed, and "error".
/// None for settings that the handler never changes.
Names valueNames(const Wire::SettingDescription& setting) {
    if (setting.setByDeviceOnly) {
        return {};
    }
    Names names = setting.values;
    if (mayBeRefused(setting.key)) {
        names.emplace_back("error");
    }
    names.push_back(other);
    return names;
}

const char* typeName(int type) {
    switch (type) {
        case Wire::GET_SETTINGS:
            return "get_settings";
        case Wire::IS_ORLIA_SELECTED_VA:
            return "is_selected";
        case Wire::OPEN_VA_SETTINGS:
            return "open_settings";
        case Wire::LOG_OUT:
            return "log_out";
        case Wire::SET_SETTINGS:
            return "set_settings";
        default:
            return "other";
    }
}

/// 0 for all that the handler does not register.
const std::array<int, 6> requestTypes{Wire::GET_SETTINGS, Wire::IS_ORLIA_SELECTED_VA, Wire::OPEN_VA_SETTINGS,
                                      Wire::LOG_OUT,      Wire::SET_SETTINGS,         0};
const std::array<const char*, 5> outcomeNames{"answered", "changed", "silent", "kept_away", "failed"};
const std::array<const char*, 4> operationNames{"read", "write", "remove", "clear"};

}  // namespace

/// One series for each value of a label, and one for all other values.
template <typename Metric>
class Series {
public:
    void add(const std::string& name, Metric& metric) { metrics.emplace(name, &metric); }

    Metric& at(const std::string& name) {
        const auto found = metrics.find(name);
        return found == metrics.end() ? *metrics.at(other) : *found->second;
    }

private:
    std::map<std::string, Metric*> metrics;
};

/// All series, made at the start: what clients send is counted in one of them or as "other".
struct ServerMetrics::Families {
    using Counter = prometheus::Counter;
    using Gauge = prometheus::Gauge;
    using Histogram = prometheus::Histogram;

    explicit Families(const std::string& version) {
        addChanges();
        addTraffic();
        addStorage();
        gauge("settings_host_build_info", "The version that runs, as a label.").Add({{"version", version}}).Set(1);
        cpuSeconds = &counter("process_cpu_seconds_total", "Processor time used, in seconds.").Add({});
        residentBytes = &gauge("process_resident_memory_bytes", "Resident memory.").Add({});
        virtualBytes = &gauge("process_virtual_memory_bytes", "Virtual memory.").Add({});
        openDescriptors = &gauge("process_open_fds", "Open descriptors.").Add({});
        maximumDescriptors = &gauge("process_max_fds", "The most descriptors that may be open.").Add({});
        startSeconds = &gauge("process_start_time_seconds", "When the process started, since the epoch.").Add({});
    }

    prometheus::Family<Counter>& counter(const std::string& name, const std::string& help) {
        return prometheus::BuildCounter().Name(name).Help(help).Register(registry);
    }
    prometheus::Family<Gauge>& gauge(const std::string& name, const std::string& help) {
        return prometheus::BuildGauge().Name(name).Help(help).Register(registry);
    }

    void addChanges() {
        auto& family = counter("settings_host_changes_total", "Accepted changes and failed ones (value \"error\").");
        const auto count = [&](const std::string& setting, const std::string& value) {
            changes[setting].add(value, family.Add({{"setting", setting}, {"value", value}}));
        };
        count(other, other);
        for (const auto& setting : Wire::catalogue()) {
            for (const auto& value : valueNames(setting)) {
                count(setting.key, value);
            }
        }
    }

    void addTraffic() {
        auto& requestFamily = counter("settings_host_requests_total", "Requests that reached the handler.");
        for (const int type : requestTypes) {
            for (const auto* outcome : outcomeNames) {
                requests[typeName(type)].add(outcome,
                                             requestFamily.Add({{"type", typeName(type)}, {"outcome", outcome}}));
            }
        }
        auto& refusalFamily = counter("settings_host_refusals_total", "Frames that the transport refused.");
        namespace RefusalCode = Wire::RefusalCode;
        for (const auto& code :
             Names{RefusalCode::notJson, RefusalCode::notAnObject, RefusalCode::unknownType, RefusalCode::tooLarge,
                   RefusalCode::tooDeep, RefusalCode::busy, RefusalCode::noMessageId, RefusalCode::badBatch,
                   RefusalCode::badRequest, RefusalCode::notHere, RefusalCode::notStored, other}) {
            refusals.add(code, refusalFamily.Add({{"code", code}}));
        }
        auto& clientFamily = gauge("settings_host_clients", "Clients that are connected.");
        auto& slowFamily =
            counter("settings_host_slow_clients_disconnected_total", "Clients disconnected because they did not read.");
        auto& refusedFamily =
            counter("settings_host_clients_turned_away_total", "Clients refused because there was no room.");
        for (const auto origin : {Origin::SOCKET, Origin::PAGE, Origin::DEVICE}) {
            clients[origin] = &clientFamily.Add({{"door", originName(origin)}});
            refused[origin] = &refusedFamily.Add({{"door", originName(origin)}});
            slowClients[origin] = &slowFamily.Add({{"door", originName(origin)}});
        }
    }

    void addStorage() {
        auto& failureFamily = counter("settings_host_storage_failures_total", "Operations of the storage that failed.");
        auto& timeFamily = prometheus::BuildHistogram()
                               .Name("settings_host_storage_seconds")
                               .Help("How long operations of the storage took.")
                               .Register(registry);
        const Histogram::BucketBoundaries bounds{0.0001, 0.0003, 0.001, 0.003, 0.01, 0.03, 0.1, 0.3, 1};
        for (const auto* operation : operationNames) {
            storageFailures.push_back(&failureFamily.Add({{"operation", operation}}));
            storageSeconds.push_back(&timeFamily.Add({{"operation", operation}}, bounds));
        }
    }

    void updateProcess() {
        const ProcessUsage usage = readProcessUsage();
        cpuSeconds->Increment(usage.cpuSeconds - cpuSeconds->Value());
        residentBytes->Set(usage.residentBytes);
        virtualBytes->Set(usage.virtualBytes);
        openDescriptors->Set(usage.openDescriptors);
        maximumDescriptors->Set(usage.maximumDescriptors);
        startSeconds->Set(usage.startSeconds);
    }

    prometheus::Registry registry;
    std::map<std::string, Series<Counter>> changes;
    std::map<std::string, Series<Counter>> requests;
    Series<Counter> refusals;
    std::map<Origin, Gauge*> clients;
    std::map<Origin, Counter*> slowClients;
    std::map<Origin, Counter*> refused;
    std::vector<Counter*> storageFailures;
    std::vector<Histogram*> storageSeconds;
    Counter* cpuSeconds = nullptr;
    Gauge* residentBytes = nullptr;
    Gauge* virtualBytes = nullptr;
    Gauge* openDescriptors = nullptr;
    Gauge* maximumDescriptors = nullptr;
    Gauge* startSeconds = nullptr;
};

ServerMetrics::ServerMetrics(const std::string& version) : families(std::make_unique<Families>(version)) {}

ServerMetrics::~ServerMetrics() = default;

std::string ServerMetrics::text() {
    families->updateProcess();
    return prometheus::TextSerializer().Serialize(families->registry.Collect());
}

void ServerMetrics::recordEvent(const std::string& /*group*/, const std::string& /*source*/,
                                const std::unordered_map<std::string, std::string>& /*attributes*/) {}

void ServerMetrics::recordCounter(const std::string& name, int /*first*/, int /*second*/, double /*third*/) {
    // No key of the catalogue holds the separator, so the key ends at the first one.
    const std::size_t end = std::min(name.find('_'), name.size());
    const auto setting = families->changes.find(name.substr(0, end));
    auto& values = setting == families->changes.end() ? families->changes.at(other) : setting->second;
    values.at(name.substr(std::min(end + 1, name.size()))).Increment();
}

void ServerMetrics::clientConnected(const Client& client) {
    families->clients.at(client.origin())->Increment();
}

void ServerMetrics::clientRefused(Origin origin) {
    families->refused.at(origin)->Increment();
}

void ServerMetrics::clientDisconnected(const Client& client, DisconnectReason reason) {
    families->clients.at(client.origin())->Decrement();
    if (reason == DisconnectReason::TOO_SLOW) {
        families->slowClients.at(client.origin())->Increment();
    }
}

void ServerMetrics::frameReceived(const Client& /*client*/, const std::string& /*frame*/) {}

void ServerMetrics::frameSent(const Client* /*receiver*/, const std::string& /*frame*/) {}

void ServerMetrics::frameRefused(const std::string& code) {
    families->refusals.at(code).Increment();
}

void ServerMetrics::requestHandled(int type, RequestOutcome outcome) {
    families->requests.at(typeName(type)).at(outcomeNames.at(static_cast<std::size_t>(outcome))).Increment();
}

void ServerMetrics::storageOperation(StorageOperation operation, bool succeeded, std::chrono::nanoseconds duration) {
    const auto index = static_cast<std::size_t>(operation);
    if (!succeeded) {
        families->storageFailures.at(index)->Increment();
    }
    families->storageSeconds.at(index)->Observe(std::chrono::duration<double>(duration).count());
}

}  // namespace SettingsHandlerKit
