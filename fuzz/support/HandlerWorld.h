#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeObservers.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/FakeTransport.h"
#include "SettingsHandlerTesting/Journal.h"
#include "SettingsHandlerTesting/platform/PlatformDoubles.h"
#include "model/ReferenceModel.h"

namespace SettingsHandlerFuzz {

/// A checked handler with fakes that share one journal, and the model that must predict it: the checks must change
/// nothing but what would end the process.
class HandlerWorld {
public:
    static constexpr int observerCount = 4;

    /// `around`: the initial state of both.
    explicit HandlerWorld(const Surroundings& around);

    /// Changes the state of the surroundings of both.
    void surround(const Surroundings& around);

    /// Checks that the journals and the stored values are equal; empties the journals.
    void expectSame(const std::string& after);
    /// Checks that all that happened was that the handler rejected a value, with this log line; empties the journal.
    void expectRejection(const std::string& line);
    /// Checks that the caches are equal too. Reads what `getCurrentSettingsMap` reads.
    void expectSameCache(const std::string& after);

    /// The journal of the handler up to the last comparison.
    const std::vector<std::string>& lastEntries() const { return compared; }

    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::PlatformRecording recording{journal};
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeTransport> transport =
        std::make_shared<SettingsHandlerTesting::FakeTransport>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> sdk =
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeDeviceInfo> device =
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal);
    std::shared_ptr<SettingsHandlerKit::CheckedSettingsHandler> handler;
    ReferenceModel model;

    std::vector<std::shared_ptr<SettingsHandlerTesting::FakeLocaleObserver>> localeObservers;
    std::vector<std::shared_ptr<SettingsHandlerTesting::FakeFriendlyNameObserver>> friendlyNameObservers;
    std::vector<std::shared_ptr<SettingsHandlerTesting::FakeEntitlementObserver>> entitlementObservers;

private:
    void makeObservers();

    std::vector<std::string> compared;
};

}  // namespace SettingsHandlerFuzz
