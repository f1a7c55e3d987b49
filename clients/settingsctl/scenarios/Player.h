#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Interruption.h"
#include "scenarios/Channel.h"
#include "scenarios/Comparison.h"
#include "scenarios/OwnHost.h"
#include "scenarios/Scenario.h"

namespace SettingsCtl {

/// What came is not what the scenario says.
struct Difference {
    /// Of the scenario's file.
    std::size_t line = 0;
    std::string message;
    /// Frames; empty where there is none.
    std::string expected = {};
    std::string got = {};
};

/// How a scenario is played.
struct PlayOptions {
    std::vector<SettingsClient::SocketCandidate> settingsSockets;
    std::vector<SettingsClient::SocketCandidate> deviceSockets;
    std::chrono::milliseconds timeout{};
    /// Divides the pauses of the scenario; 0: there are none.
    double speed = 1;
};

/// Plays the clients' and the device's part of a scenario and compares what comes with it.
///
/// The order of the file is kept: a step of ours waits until all that stands before it has come, and until the host has
/// handled what was sent before at other connections. To know that it sends a request of its own, the fence, and waits
/// for the reply, which is not compared.
class Player {
public:
    /// `host`: one of its own, null for another's.
    Player(const Scenario& scenario, PlayOptions options, OwnHost* host);

    /// Stops at the first difference. Errors: `Failure`, and those of `SettingsClient`.
    std::optional<Difference> play();
    /// How many frames have come as expected.
    std::size_t frameCount() const { return frames; }

private:
    using Time = std::chrono::steady_clock::time_point;
    /// A connection that is open in the scenario.
    struct Link {
        std::string name;
        std::unique_ptr<Channel> channel;
        /// What must come, in this order: RECEIVED and CLOSED_BY_HOST.
        std::deque<const Step*> expected;
        std::deque<std::string> arrived;
        /// What is expected ends with its end by the host.
        bool isClosing = false;
        /// The host has closed it.
        bool hasEnded = false;
        /// Something was sent after the last fence.
        bool needsFence = false;
        /// The id of the fence that is waited for.
        std::string fence;
        /// Commands of the device that have no reply yet.
        int unanswered = 0;
    };

    void playAll();
    void take(const Step& step);
    void expect(const Step& step);
    void send(const Step& step);
    void close(const Step& step);
    void endHost(const Step& step);

    Link& linkAt(const Step& step);
    std::unique_ptr<Channel> open(const std::string& at) const;
    std::string addressOfPages() const;

    /// Waits until everything that was expected has come, until the recorded pause is over and the host has handled
    /// everything but what was sent by `ours`.
    void catchUp(const Step& step, const Link* ours);
    void awaitHost(const Link* ours);
    void awaitExpected();
    void awaitTime(const Step& step);
    void fence(Link& link);
    void refuseMore(Link& link);
    [[noreturn]] void failForMissing() const;

    /// Reads what comes until `isDone`. Returns: false when the time was over first.
    bool pumpUntil(Time deadline, const std::function<bool()>& isDone);
    void readFrom(Link& link);
    void match(Link& link);
    void compare(const Link& link, const Step& step, const std::string& got);

    const Scenario& scenario;
    const PlayOptions options;
    OwnHost* const host;
    const Interruption interruption;
    const std::string fencePrefix;
    unsigned long fences = 0;
    std::map<std::string, Link> links;
    Comparison comparison;
    const Time begin = std::chrono::steady_clock::now();
    /// Of the last step that was ours.
    std::chrono::milliseconds lastTime{};
    /// Of the present step.
    std::size_t line = 0;
    std::size_t frames = 0;
};

}  // namespace SettingsCtl
