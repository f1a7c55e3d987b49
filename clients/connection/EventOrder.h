#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "SettingsClient/Notification.h"
#include "Wire/HostFrame.h"
#include "Wire/Requests.h"

namespace SettingsClient {

/// Makes one sequence, without gap or repetition, of the events of several connections to a host. Where there is a gap,
/// it says so.
class EventOrder {
public:
    /// What can be told to observers.
    struct Told {
        std::vector<Event> events;
        std::optional<Reread> reread;
    };

    /// A new connection begins. Returns: what its hello asks for; nothing when no event was seen before, or of a host
    /// that has no runs.
    std::optional<Wire::LastEvent> beginConnection();
    /// An event came.
    Told takeEvent(Event event);
    /// A notice with these keys came.
    Told takeNotice(const Wire::HostFrame& frame, std::vector<std::string> keys);
    /// The host's answer to hello came.
    /// Errors: `Wire::MalformedFrame`.
    Told takeHello(const Wire::HostFrame& answer);
    /// The host knows no hello, as `answer` says.
    Told takeRefusal(const Wire::HostFrame& answer);
    /// The host cannot resume now; a hello without that follows.
    void giveUpResuming();

private:
    /// Events may have been missed.
    Told startAnew(const Wire::HostFrame& answer);
    bool isNew(const Event& event);

    std::optional<std::string> run;
    std::uint64_t sequence = 0;
    /// Between a hello that resumes and its answer: events of this connection may come before older ones.
    bool isResuming = false;
    std::map<std::uint64_t, Event> early;
    /// Observers may know values.
    bool hasTold = false;
    /// They may know values of a former connection.
    bool mustReread = false;
};

/// The event that a frame is.
/// Errors: `Wire::MalformedFrame` when it is none, or a member is missing.
Event eventOf(const Wire::HostFrame& frame);

}  // namespace SettingsClient
