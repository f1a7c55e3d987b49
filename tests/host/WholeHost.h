#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Storage.h"
#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "kit/support/TrafficRecording.h"
#include "server/StoredTransactions.h"
#include "server/metrics/ServerMetrics.h"
#include "server/protocol/MessageHub.h"
#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHost {

using namespace SettingsHandlerKit;

/// All of the host from its transport to its disk, without listeners and loop. The disk is opened first, and closed
/// last.
struct WholeHost {
    explicit WholeHost(const std::string& file, std::shared_ptr<SettingsHostTests::FaultyDisk> itsDisk)
        : disk(std::move(itsDisk)), storage(file, disk) {
        hub->watch(handler);
        hub->use(transactions);
        transactions->watch(storage);
        transactions->watch(handler);
        transactions->onRollBack([this] {
            device->readState();
            sdk->readState();
        });
        handler->initializeSettings();
        hub->connected(client);
    }

    std::shared_ptr<SettingsHostTests::FaultyDisk> disk;
    std::shared_ptr<ServerMetrics> metrics = std::make_shared<ServerMetrics>("1");
    std::shared_ptr<MessageHub> hub = std::make_shared<MessageHub>(std::make_shared<TrafficRecording>());
    /// What the loop would do next.
    std::vector<std::function<void()>> later;
    std::shared_ptr<StoredTransactions> transactions = std::make_shared<StoredTransactions>(
        *hub, [this](std::function<void()> action) { later.push_back(std::move(action)); });
    Storage storage;
    std::unique_ptr<StateStore> state = storage.state("simulation");
    std::shared_ptr<SimulatedDevice> device = std::make_shared<SimulatedDevice>(*state, hub);
    std::shared_ptr<SimulatedSdkBridge> sdk = std::make_shared<SimulatedSdkBridge>(*state, storage, device, hub);
    std::shared_ptr<CheckedSettingsHandler> handler =
        CheckedSettingsHandler::create(hub, storage, metrics, sdk, std::make_shared<SimulatedAppLaunch>(), device);
    std::shared_ptr<SettingsHandlerTesting::FakeClient> client = std::make_shared<SettingsHandlerTesting::FakeClient>();
};

/// Values are inserted as they are.
inline std::string setRequest(const std::string& key, const std::string& value, long timestamp = 2,
                              const std::string& more = "") {
    return "{" + more + R"("type":24,"timestamp":)" + std::to_string(timestamp) + R"(,"payload":{"settingDBId":")" +
           key + R"(","to":")" + value + "\"}}";
}

inline std::string batchOf(const std::vector<std::string>& requests) {
    std::string frame = R"({"batch":[)";
    for (const auto& request : requests) {
        frame += (&request == requests.data() ? "" : ",") + request;
    }
    return frame + "]}";
}

}  // namespace SettingsHost
