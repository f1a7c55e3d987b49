#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "model/WireModel.h"
#include "server/protocol/Administration.h"
#include "server/protocol/MessageHub.h"
#include "server/protocol/Transactions.h"
#include "support/Check.h"
#include "support/HostSide.h"
#include "support/QuickHandler.h"

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

/// Rolls the owners back when a batch is not stored. It is the fakes' state, not time stamps, that it restores.
class FakeTransactions : public SettingsHandlerKit::Transactions {
public:
    FakeTransactions(bool storesAll, SettingsHandlerTesting::FakeStorage& itsStorage,
                     std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> itsSdk)
        : stores(storesAll), storage(itsStorage), sdk(std::move(itsSdk)) {}

    void begin() override;
    bool commit() override { return stores; }
    void restore(const std::set<std::string>& changed) override;

    /// Set before the first batch.
    std::weak_ptr<SettingsHandlerKit::CheckedSettingsHandler> handler;

private:
    const bool stores;
    SettingsHandlerTesting::FakeStorage& storage;
    std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> sdk;
    Surroundings before;
};

/// The hub as the handler's transport, with two clients, beside the model.
class HubWorld {
public:
    /// The journal of all worlds of the process. The one that is running has it for itself.
    struct Recorder {
        SettingsHandlerTesting::Journal journal;
        LogToJournal log{journal};
    };

    struct Host {
        SettingsHandlerKit::ListenerKind listenerOfRequester;
        bool storesBatches;
    };

    /// What the initialisation led to.
    struct Start {
        QuickHandler::Values values;
        WireModel model;
    };

    /// `recorder` outlives it. `known`: what another initialisation led to, or null.
    HubWorld(Recorder& itsRecorder, const Surroundings& around, const Host& host, const Start* known);
    /// What its own initialisation led to, before anything else.
    Start startOf() const { return {initialValues, model}; }

    /// Copies the journal and the frames from now on to `entries`.
    void recordInto(Entries& entries) { record = &entries; }

    /// The requester sends a frame that is too large.
    void refuseTooLarge();
    /// The requester sends a frame: what the clients, the journal and the report then have is what the model says.
    void receive(const std::string& frame);

private:
    /// `received`: the frame that led to it; null when none was passed on.
    void expect(const WireModel::Reaction& expected, const std::string* received = nullptr);
    Entries expectFrames(const WireModel::Reaction& expected, const std::vector<TrafficRecord::Sent>& reported);

    Recorder& recorder;
    SettingsHandlerTesting::Journal& journal = recorder.journal;
    Entries* record = nullptr;
    QuickHandler::Values initialValues;
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> sdk =
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeDeviceInfo> device =
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal);
    std::shared_ptr<TrafficRecord> traffic = std::make_shared<TrafficRecord>();
    FakeAdministration administration{storage};
    std::shared_ptr<FakeTransactions> transactions;
    std::shared_ptr<SettingsHandlerKit::MessageHub> hub;
    std::shared_ptr<FrameCollector> requester;
    std::shared_ptr<FrameCollector> other;
    std::shared_ptr<QuickHandler> handler;
    WireModel model;
};

}  // namespace SettingsHandlerFuzz
