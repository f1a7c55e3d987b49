#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeObservers.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/FakeTransport.h"
#include "SettingsHandlerTesting/Journal.h"
#include "SettingsHandlerTesting/platform/PlatformDoubles.h"
#include "model/ReferenceModel.h"
#include "support/Check.h"
#include "support/QuickHandler.h"

namespace SettingsHandlerFuzz {

/// The journal of all worlds of the process. The one that is running has it for itself.
struct Recorder {
    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::PlatformRecording recording{journal};
};

/// A checked handler with fakes that share one journal, and the model that must predict it: the checks must change
/// nothing but what would end the process.
class HandlerWorld {
public:
    static constexpr int observerCount = 4;

    /// What the initialisation led to.
    struct Start {
        QuickHandler::Values values;
        ReferenceModel model;
    };

    /// `around`: the initial state of both. `recorder` outlives it.
    HandlerWorld(Recorder& recorder, const Surroundings& around);
    /// Initialises both; with what another initialisation led to, if `known` is not null.
    void start(const Start* known);
    /// What `start` led to.
    Start startOf() const { return {initialValues, model}; }

    /// Copies all entries that are compared from now on to `entries`.
    void recordInto(Entries& entries) { record = &entries; }

    /// Fills the three lists of observers below. None of them is added to the handler.
    void makeObservers();

    /// Changes the state of the surroundings of both.
    void surround(const Surroundings& around);

    /// Checks that the journals and the stored values are equal; empties the journals.
    void expectSame(std::string_view after);
    /// Checks that all that happened was that the handler rejected a value, with this log line; empties the journal.
    void expectRejection(const std::string& line);
    /// Checks that the caches are equal too. Reads what `getCurrentSettingsMap` reads.
    void expectSameCache(std::string_view after);

    /// The journal of the handler up to the last comparison.
    const Entries& lastEntries() const { return compared; }

    SettingsHandlerTesting::Journal& journal;
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeTransport> transport =
        std::make_shared<SettingsHandlerTesting::FakeTransport>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> sdk =
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeDeviceInfo> device =
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal);
    std::shared_ptr<QuickHandler> handler;
    ReferenceModel model;

    std::vector<std::shared_ptr<SettingsHandlerTesting::FakeLocaleObserver>> localeObservers;
    std::vector<std::shared_ptr<SettingsHandlerTesting::FakeFriendlyNameObserver>> friendlyNameObservers;
    std::vector<std::shared_ptr<SettingsHandlerTesting::FakeEntitlementObserver>> entitlementObservers;

private:
    void take();

    Entries compared;
    Entries* record = nullptr;
    QuickHandler::Values initialValues;
};

}  // namespace SettingsHandlerFuzz
