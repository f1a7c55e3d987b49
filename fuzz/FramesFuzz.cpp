// Any bytes on the settings socket, in any chunks: the frames do not depend on the chunks, each gets the right replies,
// answers and refusals, events have no gap, and a refused frame has no effect.

#include <algorithm>

#include <fuzzer/FuzzedDataProvider.h>

#include "DeviceAbstractionLayer/AppNameToStringMapping.h"
#include "server/sockets/LineFramer.h"
#include "support/Check.h"
#include "support/HubWorld.h"
#include "support/Input.h"
#include "support/Starts.h"

namespace {

using namespace SettingsHandlerFuzz;
using SettingsHandlerKit::LineFramer;
using SettingsHandlerKit::ListenerKind;

struct Chunks {
    /// 0: everything at once.
    std::size_t largest = 0;
    std::uint32_t seed = 0;

    std::size_t next() {
        seed = seed * 1664525U + 1013904223U;
        return 1 + (seed >> 8U) % largest;
    }
};

const std::string tooLarge = "(too large)";

/// The frames that the host's framer cuts.
Entries framed(const std::string& bytes, std::size_t limit, Chunks chunks) {
    Entries frames;
    LineFramer framer(limit);
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t wanted = chunks.largest == 0 ? bytes.size() : chunks.next();
        const std::size_t size = std::min(wanted, bytes.size() - start);
        framer.append(bytes.data() + start, size);
        start += size;
        while (const auto frame = framer.next()) {
            frames.push_back(frame->tooLarge ? tooLarge : "frame " + frame->text);
        }
    }
    return frames;
}

/// The frames as the protocol describes them.
Entries framesOf(const std::string& bytes, std::size_t limit) {
    Entries frames;
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t end = bytes.find('\n', start);
        const std::string line = bytes.substr(start, end == std::string::npos ? end : end - start);
        if (line.size() > limit) {
            frames.push_back(tooLarge);
        } else if (end != std::string::npos && line.find_first_not_of(" \t\r") != std::string::npos) {
            frames.push_back("frame " + line);
        }
        start = end == std::string::npos ? bytes.size() : end + 1;
    }
    return frames;
}

void receive(HubWorld& world, const Entries& frames) {
    for (const auto& frame : frames) {
        if (frame == tooLarge) {
            world.refuseTooLarge();
        } else {
            world.receive(frame.substr(sizeof("frame")));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argumentCount*/, char*** /*arguments*/) {
    // The name that the model knows.
    DeviceAbstractionLayer::AppNameToStringMapping[DeviceAbstractionLayer::AppName::VA_SETTINGS_APP] = "settings-app";
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static HubWorld::Recorder recorder;
    static Starts<HubWorld> starts(1024);
    FuzzedDataProvider input(data, size);
    constexpr std::size_t limits[] = {65536, 200, 40, 1};
    const auto choice = input.ConsumeIntegralInRange<std::size_t>(0, 15);
    const std::size_t limit = limits[choice % 4];
    const ListenerKind listener = choice / 4 % 2 == 0 ? ListenerKind::UNIX_SOCKET : ListenerKind::WEB;
    const bool storesBatches = choice < 8;
    const std::uint8_t surroundings = input.ConsumeIntegral<std::uint8_t>();
    const Chunks random{input.ConsumeIntegralInRange<std::size_t>(2, 300), input.ConsumeIntegral<std::uint8_t>()};
    const std::string bytes = input.ConsumeRemainingBytesAsString();

    const Entries frames = framed(bytes, limit, {});
    checkSame(frames, framesOf(bytes, limit), "the frames");
    checkSame(framed(bytes, limit, {1, 0}), frames, "the frames of single bytes");
    checkSame(framed(bytes, limit, random), frames, "the frames of random chunks");

    const auto make = [&](const HubWorld::Start* start) {
        return std::make_unique<HubWorld>(recorder, surroundingsFrom(surroundings),
                                          HubWorld::Host{listener, storesBatches}, start);
    };
    starts.run(surroundings * 4U + choice / 4, make, [&](HubWorld& world) { receive(world, frames); });
    return 0;
}
