// Any lines on the device socket: each gets one reply, an error changes nothing, and each change is reported to clients
// and survives a restart.

#include <algorithm>
#include <sstream>

#include <fuzzer/FuzzedDataProvider.h>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/kit/FakeStateStore.h"
#include "model/Json.h"
#include "model/WireModel.h"
#include "server/protocol/MessageHub.h"
#include "server/protocol/TrafficObservers.h"
#include "simulation/DeviceConsole.h"
#include "simulation/World.h"
#include "support/Check.h"
#include "support/HostSide.h"

namespace {

using namespace SettingsHandlerFuzz;
using namespace SettingsHost;
using namespace SettingsHandlerKit;

using Facts = std::map<std::string, std::string>;

class DeviceWorld {
public:
    DeviceWorld() {
        traffic->add(trace);
        hub->connected(page);
        console.connected(client);
        faults->define(Fault::SDK_CHANGES, [this](const std::string& key) { return sdk->changeByItself(key); });
        faults->define(Fault::RESTART, [](const std::string& /*value*/) { return true; });
        console.obey(DeviceCommands(
            device, sdk, app, [this] { return handler->outcome(); }, faults,
            [this](bool withValues) { return worldFrame(currentWorld(storage, *sdk, *device, *faults), withValues); }));
        hub->perform(Origin::DEVICE, [this] { handler->initializeSettings(); });
        device->subscribe(handler, handler);
        page->take();
        journal.take();
    }

    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::FakeStateStore state{journal};
    SettingsHandlerTesting::FakeStorage storage{journal};

    void receive(const std::string& frame) {
        const Facts before = facts(*device, *sdk);
        const auto stored = storage.values;
        console.received(client, frame);
        const std::string answer = answerOf(client->take());
        const Facts after = facts(*device, *sdk);
        const std::string code = codeOf(answer);

        const std::string refusal = refusalOf(frame);
        check(refusal.empty() || code == refusal, "a frame that is refused: ", refusal);
        check(code.empty() || codes.count(code) > 0, "an error that the protocol knows: ", code);
        if (!code.empty()) {
            check(before == after && stored == storage.values, "an error changes nothing");
            check(page->take().empty(), "an error is sent to no other client");
            return;
        }
        const Announced announced = announcedKeys();
        expectAnnounced(before, after, announced);
        expectDurable(after);
        if (Envelope(answer).has("changed")) {
            const auto command = Envelope(frame).text("command");
            check(command == "setting" || command == "fault", "a setting or a fault alone may be unchanged");
            check(answer == R"({"ok":true,"changed":false})", "an answer to a setting that is unchanged");
            check(before == after && stored == storage.values, "unchanged is unchanged");
            check(announced.events.empty() && announced.notices.empty(), "no event or notice for an unchanged value");
            return;
        }
        expectAnswered(Envelope(frame), Envelope(answer), after);
    }

private:
    /// The values that `show` shows, by key.
    static Facts facts(SimulatedDevice& shown, SimulatedSdkBridge& bridge) {
        Facts all;
        auto info = shown.getDeviceInfo();
        all["handsFreeEnabled"] = info["currentHandsFreeStatus"];
        all["handsFreeAlwaysOnEnabled"] = info["currentAlwaysOnVoiceMode"];
        all["pttAlwaysOnEnabled"] = info["currentAlwaysOnPTTMode"];
        all["captionsEnabled"] = bridge.isCaptionsEnabled() ? "true" : "false";
        all["doNotDisturbEnabled"] = bridge.isDoNotDisturbEnabled() ? "true" : "false";
        all["orliaLocale"] = arrayText(bridge.getLocales());
        all["timezone"] = bridge.getTimezone();
        return all;
    }

    /// The only reply among trace frames.
    static std::string answerOf(const std::vector<std::string>& frames) {
        std::string answer;
        for (const auto& frame : frames) {
            if (!Envelope(frame).has("trace")) {
                check(answer.empty(), "exactly one reply");
                answer = frame;
            }
        }
        check(!answer.empty(), "every frame gets a reply");
        return answer;
    }

    struct Announced {
        std::set<std::string> events;
        std::set<std::string> notices;
    };

    Announced announcedKeys() {
        Announced keys;
        for (const auto& text : page->take()) {
            const Envelope frame(text);
            if (frame.has("notice")) {
                const auto reread = arrayElements(Envelope(frame.compact("notice")).compact("reread"));
                for (const auto& key : *reread) {
                    check(key && keys.notices.insert(*key).second, "a notice names each key once");
                }
            } else {
                check(frame.text("origin") == "device", "an event names its origin");
                check(keys.events.insert(frame.payloadText("settingDBId").value()).second, "one event for each change");
            }
        }
        return keys;
    }

    static void expectAnnounced(const Facts& before, const Facts& after, const Announced& announced) {
        for (const auto& [key, value] : after) {
            const bool changed = before.at(key) != value;
            check(!changed || announced.events.count(key) + announced.notices.count(key) > 0,
                  "a change is reported: ", key);
        }
        for (const auto& key : announced.notices) {
            check(announced.events.count(key) == 0, "a key with an event is not in a notice: ", key);
            const auto fact = after.find(key);
            check(fact == after.end() || before.at(key) != fact->second, "a notice is for a change: ", key);
        }
    }

    /// A device and an SDK that load the saved state show the same values.
    void expectDurable(const Facts& after) {
        const auto otherDevice = std::make_shared<SimulatedDevice>(state, hub);
        SimulatedSdkBridge otherSdk(state, storage, otherDevice, hub);
        check(facts(*otherDevice, otherSdk) == after, "what is shown survives a restart");
    }

    void expectAnswered(const Envelope& command, const Envelope& answer, const Facts& after) {
        const std::string name = command.text("command").value_or("");
        if (name == "show") {
            const Envelope shown(answer.compact("device"));
            for (const std::string key : {"captionsEnabled", "doNotDisturbEnabled", "timezone"}) {
                check(shown.text(key) == after.at(key), "what is shown is what is: ", key);
            }
            check(shown.text("locales") == after.at("orliaLocale"), "what is shown is what is: locales");
            return;
        }
        if (name == "page") {
            check(Envelope(answer.compact("page")).text("address") == "http://page", "the address of the page");
            return;
        }
        if (name == "save") {
            check(answer.names() == Entries{"world", "leftOut"}, "the world");
            return;
        }
        if (name == "faults") {
            check(answer.names() == Entries{"faults"}, "the faults");
            return;
        }
        check(answer.names() == Entries{"ok"}, "the reply to any other command is ok");
        if (name == "locale") {
            const std::string locale = command.text("value").value();
            check(sdk->getLocales().at(0) == locale && !locale.empty(), "the locale is the primary one");
        } else if (name == "timezone") {
            check(after.at("timezone") == command.text("value"), "the time zone is the one asked for");
        } else if (name == "handsfree") {
            check((after.at("handsFreeEnabled") == "on") == (command.compact("enabled") == "true"), "hands-free");
        } else if (name == "captions" || name == "doNotDisturb") {
            check(after.at(name + "Enabled") == command.compact("enabled"), name);
        }
    }

    const std::set<std::string> codes{"not-json",     "too-deep",      "not-an-object", "unknown-command",
                                      "bad-argument", "not-passed-on", "not-written",   "too-large",
                                      "read-only",    "wrong-form",    "not-stored"};
    LogToJournal log{journal};
    std::shared_ptr<TrafficObservers> traffic = std::make_shared<TrafficObservers>();
    std::shared_ptr<MessageTrace> trace = std::make_shared<MessageTrace>();
    std::shared_ptr<MessageHub> hub = std::make_shared<MessageHub>(traffic);
    std::shared_ptr<SimulatedDevice> device = std::make_shared<SimulatedDevice>(state, hub);
    std::shared_ptr<SimulatedSdkBridge> sdk = std::make_shared<SimulatedSdkBridge>(state, storage, device, hub);
    std::shared_ptr<Faults> faults = std::make_shared<Faults>();
    std::shared_ptr<SimulatedAppLaunch> app = std::make_shared<SimulatedAppLaunch>();
    std::shared_ptr<CheckedSettingsHandler> handler = CheckedSettingsHandler::create(
        hub, storage, std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal), sdk, app, device);
    DeviceConsole console{[this](const auto& action) { hub->perform(Origin::DEVICE, action); }, traffic, trace,
                          PageAddress{[] { return std::string("http://page"); },
                                      [] { return std::optional<std::string>("http://page"); }}};
    std::shared_ptr<FrameCollector> client = std::make_shared<FrameCollector>(Origin::DEVICE);
    std::shared_ptr<FrameCollector> page = std::make_shared<FrameCollector>(Origin::PAGE);
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    DeviceWorld world;
    // The first frame at which state and storage cannot be written, and the number of such frames; 0: all.
    const auto firstFailure = input.ConsumeIntegralInRange<int>(0, 15);
    const auto failures = input.ConsumeIntegralInRange<int>(0, 15);
    const bool storageFails = input.ConsumeBool();
    std::istringstream lines(input.ConsumeRemainingBytesAsString());
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        ++count;
        if (count == firstFailure) {
            world.state.refusesWrites = true;
            world.storage.refusesWrites = storageFails;
        } else if (failures > 0 && count == firstFailure + failures) {
            world.state.refusesWrites = false;
            world.storage.refusesWrites = false;
        }
        world.receive(line);
    }
    return 0;
}
