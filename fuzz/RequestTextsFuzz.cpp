// Any text as a request of any type: the journal is the model's, and a refused request has no effect but its log line.

#include <fuzzer/FuzzedDataProvider.h>

#include "support/Check.h"
#include "support/Guarded.h"
#include "support/HandlerWorld.h"
#include "support/Input.h"
#include "support/Starts.h"

namespace {

using namespace SettingsHandlerFuzz;

constexpr int requestTypes[] = {7, 18, 19, 22, 24};

constexpr std::initializer_list<std::string_view> effects{"storage.set", "storage.remove", "storage.clear",
                                                          "sdk.set",     "sdk.apply",      "transport.",
                                                          "metrics",     "observer",       "app."};
/// The log lines of requests that are refused before any setting is read.
constexpr std::initializer_list<std::string_view> refusals{"log 3 SettingsHandler:Payload was not parsed successfully",
                                                           "log 3 SettingsHandler:SetSetting ",
                                                           "log 3 SettingsHandler:GetSettings ",
                                                           "log 3 SettingsHandler:Invalid Request",
                                                           "log 3 SettingsHandler:to value field",
                                                           "log 3 SettingsHandler:Message ID "};

void deliver(HandlerWorld& world, int type, const std::string& text) {
    world.transport->deliver(type, text);
    world.model.request(type, text);
    world.expectSame("a request");
    const auto& entries = world.lastEntries();
    if (type != 19 && type != 22 && hasEntry(entries, refusals)) {
        check(!hasEntry(entries, effects), "a refused request has no effect");
        check(!hasEntry(entries, {"storage.", "sdk.", "device."}), "a refused request reads nothing");
    }
}

void run(HandlerWorld& world, int type, const std::string& text) {
    if (type == 24 && !mayBeGiven(text)) {
        world.transport->deliver(type, text);
        return world.expectRejection("rejected orliaLocale: must be a JSON array of at most 32 levels");
    }
    deliver(world, type, text);
    // The second time the value is the same, and the time stamp too.
    deliver(world, type, text);
    world.expectSameCache("a request");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Recorder recorder;
    static Starts<HandlerWorld> starts(512);
    FuzzedDataProvider input(data, size);
    const int type = requestTypes[input.ConsumeIntegralInRange<std::size_t>(0, 4)];
    const auto surroundings = input.ConsumeIntegral<std::uint8_t>();
    const bool initialised = input.ConsumeBool();
    const std::string text = input.ConsumeRemainingBytesAsString();
    const auto make = [&](const HandlerWorld::Start* start) {
        auto world = std::make_unique<HandlerWorld>(recorder, surroundingsFrom(surroundings));
        if (initialised) {
            world->start(start);
        }
        return world;
    };
    starts.run(surroundings * 2U + (initialised ? 1U : 0U), make, [&](HandlerWorld& world) { run(world, type, text); });
    return 0;
}
