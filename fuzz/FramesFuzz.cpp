// Any bytes on the settings socket, in any chunks: the frames do not depend on the chunks, each gets the right reply or
// refusal, and a refused frame has no effect.

#include <algorithm>

#include <fuzzer/FuzzedDataProvider.h>

#include "DeviceAbstractionLayer/AppNameToStringMapping.h"
#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "model/Json.h"
#include "server/protocol/MessageHub.h"
#include "server/sockets/LineFramer.h"
#include "support/Check.h"
#include "support/HostSide.h"
#include "support/Input.h"
#include "support/Surround.h"
#include "support/TableOrder.h"

namespace {

using namespace SettingsHandlerFuzz;
using SettingsHandlerKit::LineFramer;

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

/// The hub as the handler's transport, with two clients, beside the model.
class HubWorld {
public:
    explicit HubWorld(const Surroundings& around) : model(keysInTableOrder()) {
        model.around = around;
        SettingsHandlerFuzz::surround(storage, *sdk, *device, around);
        hub->connected(requester);
        hub->connected(other);
        hub->watch(handler);
        handler->initializeSettings();
        model.initializeSettings();
        journal.take();
        model.take();
    }

    void refuseTooLarge() {
        hub->oversized(requester);
        expectRefusal("too-large", traffic->take());
    }

    void receive(const std::string& frame) {
        hub->received(requester, frame);
        Entries lines = traffic->take();
        check(!lines.empty() && lines.front() == "received " + frame, "a frame is reported first");
        lines.erase(lines.begin());
        const auto type = Envelope(frame).integer("type");
        const std::string refusal = refusalOf(frame);
        if (!refusal.empty()) {
            expectRefusal(refusal, lines);
        } else if (!type || std::find(types.begin(), types.end(), *type) == types.end()) {
            expectRefusal("unknown-type", lines);
        } else if (*type == 24 && isRejected(frame)) {
            checkSame(lines, {"handled 24 REJECTED"}, "the report of a frame that is rejected");
            expectNothingSent();
            checkSame(journal.take(),
                      {"log 3 " + SettingsHandlerKit::programName() +
                       ":rejected orliaLocale: must be a JSON array of at most 32 levels"},
                      "a frame that is rejected");
        } else {
            expectDelivery(static_cast<int>(*type), frame, lines);
        }
    }

private:
    static bool isRejected(const std::string& frame) {
        const Envelope request(frame);
        const Envelope value(request.payloadText("to").value_or("["));
        return request.payloadText("settingDBId") == "orliaLocale" && value.isJson() &&
               (!value.isArray() || value.nesting() > 32);
    }

    void expectNothingSent() {
        checkSame(requester->take(), {}, "nothing for the sender");
        checkSame(other->take(), {}, "nothing for the others");
    }

    void expectRefusal(const std::string& code, const Entries& lines) {
        const Entries own = requester->take();
        check(own.size() == 1 && codeOf(own.front()) == code, "the sender alone gets the refusal: " + code);
        checkSame(lines, {"sent to one " + own.front(), "refused " + code}, "the report of a refusal");
        expectNothingSent();
        checkSame(journal.take(), {}, "a refused frame has no effect");
    }

    /// A frame to a client as the fake transport records it.
    std::string entryOf(const std::string& text) {
        const Envelope frame(text);
        const std::string payload = frame.compact("payload");
        if (frame.integer("type") != 25) {
            return "transport.sendResponse(" + frame.text("messageId").value_or("(none)") + ", " + payload + ")";
        }
        check(frame.names() == Entries{"type", "messageId", "timestamp", "sequence", "origin", "payload"},
              "the members of an event");
        check(frame.integer("sequence") == ++sequence, "events are numbered without gaps");
        check(frame.text("origin") == "socket", "an event names its origin");
        return "transport.sendMessage(25, " + payload + ")";
    }

    void expectDelivery(int type, const std::string& frame, const Entries& lines) {
        model.request(type, frame);
        Entries expectedFrames;
        Entries expectedEntries;
        for (const auto& entry : model.take()) {
            // The real metrics cache has no journal.
            if (entry.rfind("transport.", 0) == 0) {
                expectedFrames.push_back(entry);
            } else if (entry.rfind("metricsCache.", 0) != 0) {
                expectedEntries.push_back(entry);
            }
        }
        checkSame(journal.take(), expectedEntries, "the journal of a request");
        Entries frames;
        Entries events;
        for (const auto& text : requester->take()) {
            frames.push_back(entryOf(text));
            if (frames.back().rfind("transport.sendMessage", 0) == 0) {
                events.push_back(text);
            }
        }
        checkSame(frames, expectedFrames, "the frames for the requester");
        checkSame(other->take(), events, "other clients get the events only");
        const bool answered = !frames.empty() && events.size() != frames.size();
        const std::string outcome = answered ? "ANSWERED" : frames.empty() ? "SILENT" : "CHANGED";
        check(lines.size() == frames.size() + 1 && lines.back() == "handled " + std::to_string(type) + " " + outcome,
              "the report of a request");
    }

    const std::vector<long> types{7, 18, 19, 22, 24};
    SettingsHandlerTesting::Journal journal;
    LogToJournal log{journal};
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> sdk =
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeDeviceInfo> device =
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal);
    std::shared_ptr<TrafficLines> traffic = std::make_shared<TrafficLines>();
    std::shared_ptr<SettingsHandlerKit::MessageHub> hub = std::make_shared<SettingsHandlerKit::MessageHub>(traffic);
    std::shared_ptr<FrameCollector> requester = std::make_shared<FrameCollector>(SettingsHandlerKit::Origin::SOCKET);
    std::shared_ptr<FrameCollector> other = std::make_shared<FrameCollector>(SettingsHandlerKit::Origin::PAGE);
    std::shared_ptr<SettingsHandlerKit::CheckedSettingsHandler> handler =
        SettingsHandlerKit::CheckedSettingsHandler::create(
            hub, storage, std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal), sdk,
            std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal), device);
    ReferenceModel model;
    long sequence = 0;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argumentCount*/, char*** /*arguments*/) {
    // The name that the model knows.
    DeviceAbstractionLayer::AppNameToStringMapping[DeviceAbstractionLayer::AppName::VA_SETTINGS_APP] = "settings-app";
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    constexpr std::size_t limits[] = {65536, 200, 40, 1};
    const std::size_t limit = limits[input.ConsumeIntegralInRange<std::size_t>(0, 3)];
    const std::uint8_t surroundings = input.ConsumeIntegral<std::uint8_t>();
    const Chunks random{input.ConsumeIntegralInRange<std::size_t>(2, 300), input.ConsumeIntegral<std::uint8_t>()};
    const std::string bytes = input.ConsumeRemainingBytesAsString();

    const Entries frames = framed(bytes, limit, {});
    checkSame(frames, framesOf(bytes, limit), "the frames");
    checkSame(framed(bytes, limit, {1, 0}), frames, "the frames of single bytes");
    checkSame(framed(bytes, limit, random), frames, "the frames of random chunks");

    HubWorld world(surroundingsFrom(surroundings));
    for (const auto& frame : frames) {
        if (frame == tooLarge) {
            world.refuseTooLarge();
        } else {
            world.receive(frame.substr(sizeof("frame")));
        }
    }
    return 0;
}
