#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "model/WireModel.h"
#include "server/protocol/Administration.h"
#include "server/protocol/MessageHub.h"
#include "support/HostSide.h"

namespace SettingsHandlerFuzz {

/// Backs up unless the storage refuses writes.
class FakeAdministration : public SettingsHandlerKit::Administration {
public:
    explicit FakeAdministration(const SettingsHandlerTesting::FakeStorage& itsStorage) : storage(itsStorage) {}

    std::string pageAddress() const override { return WireModel::pageAddress; }
    std::optional<std::string> renewPageKey() override;
    std::string backUp() override;
    Wire::StatusReply status() override;

private:
    const SettingsHandlerTesting::FakeStorage& storage;
};

/// The hub as the handler's transport, with two clients, beside the model.
class HubWorld {
public:
    HubWorld(const Surroundings& around, SettingsHandlerKit::ListenerKind listenerOfRequester);

    /// The requester sends a frame that is too large.
    void refuseTooLarge();
    /// The requester sends a frame: what the clients, the journal and the report then have is what the model says.
    void receive(const std::string& frame);

private:
    void expect(const WireModel::Reaction& expected, const std::vector<std::string>& lines);

    SettingsHandlerTesting::Journal journal;
    LogToJournal log{journal};
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> sdk =
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeDeviceInfo> device =
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal);
    std::shared_ptr<TrafficLines> traffic = std::make_shared<TrafficLines>();
    FakeAdministration administration{storage};
    std::shared_ptr<SettingsHandlerKit::MessageHub> hub;
    std::shared_ptr<FrameCollector> requester;
    std::shared_ptr<FrameCollector> other;
    std::shared_ptr<SettingsHandlerKit::CheckedSettingsHandler> handler;
    WireModel model;
};

}  // namespace SettingsHandlerFuzz
