// Any bytes on the settings socket, in any chunks: the frames do not depend on the chunks, each gets the right replies,
// answers and refusals, events have no gap, and a refused frame has no effect.

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

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

/// A part of the bytes; nothing when it is too large.
using Frames = std::vector<std::optional<std::string_view>>;

/// Checks that the host's framer cuts these frames.
void checkFramed(const std::string& bytes, std::size_t limit, Chunks chunks, const Frames& expected,
                 std::string_view what) {
    std::size_t count = 0;
    LineFramer framer(limit);
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t wanted = chunks.largest == 0 ? bytes.size() : chunks.next();
        const std::size_t size = std::min(wanted, bytes.size() - start);
        framer.append(bytes.data() + start, size);
        start += size;
        while (const auto frame = framer.next()) {
            check(count < expected.size(), what, "more than expected");
            const auto& wanted = expected[count++];
            check(frame->tooLarge ? !wanted : wanted == frame->text, what, frame->text);
        }
    }
    check(count == expected.size(), what, "fewer than expected");
}

/// The frames as the protocol describes them.
Frames framesOf(std::string_view bytes, std::size_t limit) {
    Frames frames;
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t end = bytes.find('\n', start);
        const std::string_view line = bytes.substr(start, end == std::string_view::npos ? end : end - start);
        if (line.size() > limit) {
            frames.emplace_back();
        } else if (end != std::string_view::npos && line.find_first_not_of(" \t\r") != std::string_view::npos) {
            frames.emplace_back(line);
        }
        start = end == std::string_view::npos ? bytes.size() : end + 1;
    }
    return frames;
}

void receive(HubWorld& world, const Frames& frames) {
    for (const auto& frame : frames) {
        if (frame) {
            world.receive(std::string(*frame));
        } else {
            world.refuseTooLarge();
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

    const Frames frames = framesOf(bytes, limit);
    checkFramed(bytes, limit, {}, frames, "the frames: ");
    checkFramed(bytes, limit, {1, 0}, frames, "the frames of single bytes: ");
    checkFramed(bytes, limit, random, frames, "the frames of random chunks: ");

    const auto make = [&](const HubWorld::Start* start) {
        return std::make_unique<HubWorld>(recorder, surroundingsFrom(surroundings),
                                          HubWorld::Host{listener, storesBatches}, start);
    };
    starts.run(surroundings * 4U + choice / 4, make, [&](HubWorld& world) { receive(world, frames); });
    return 0;
}
