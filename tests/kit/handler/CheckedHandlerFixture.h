#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CommunicationHandler/MessageType.h"
#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerTesting/FakeObservers.h"
#include "SettingsHandlerTesting/TestHandler.h"
#include "SettingsHandlerTesting/platform/PlatformDoubles.h"

namespace SettingsHandlerKit {

using Entries = std::vector<std::string>;
using Kind = Outcome::Kind;
using Reason = Outcome::Reason;

inline bool operator==(const Outcome& left, const Outcome& right) {
    return left.kind == right.kind && left.reason == right.reason && left.settingDBId == right.settingDBId &&
           left.applied == right.applied && left.newest == right.newest && left.rejected == right.rejected;
}

inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << "kind " << static_cast<int>(outcome.kind) << ", reason " << static_cast<int>(outcome.reason)
                  << ", " << outcome.settingDBId << (outcome.applied ? "" : ", not applied") << ", newest "
                  << outcome.newest << (outcome.rejected ? ", rejected" : "") << ": " << outcome.message;
}

inline Outcome outcomeOf(Kind kind, const std::string& settingDBId = "") {
    Outcome outcome;
    outcome.kind = kind;
    outcome.settingDBId = settingDBId;
    return outcome;
}

inline Outcome refusedFor(Reason reason, const std::string& settingDBId = "", long newest = 0) {
    Outcome outcome = outcomeOf(Kind::REFUSED, settingDBId);
    outcome.reason = reason;
    outcome.newest = newest;
    return outcome;
}

inline Outcome rejectedFor(Reason reason, long newest = 0) {
    Outcome outcome = refusedFor(reason, "orliaLocale", newest);
    outcome.rejected = true;
    return outcome;
}

/// A checked handler among fakes. Log lines are in the journal.
class CheckedHandler : public ::testing::Test {
protected:
    using World = SettingsHandlerTesting::BasicTestHandler<CheckedSettingsHandler>;

    void set(const std::string& payload, long timestamp = 1) {
        world.transport->deliver(CommunicationHandler::SET_SETTINGS,
                                 R"({"timestamp":)" + std::to_string(timestamp) + R"(,"payload":)" + payload + "}");
    }

    static std::string change(const std::string& key, const std::string& value) {
        return SettingsHandlerTesting::changePayload(key, value);
    }

    Outcome outcome() const { return world->outcome(); }

    World world;
    SettingsHandlerTesting::PlatformRecording recording{world.journal};
};

}  // namespace SettingsHandlerKit
