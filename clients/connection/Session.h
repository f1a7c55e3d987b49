#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "SettingsClient/Client.h"
#include "Wire/HostFrame.h"
#include "connection/Connection.h"
#include "connection/EventOrder.h"
#include "connection/WakeUp.h"

namespace SettingsClient {

/// What a client has to do with a host, over all its connections: hello, requests, notifications in one sequence.
/// Errors of all that sends or receives: `ConnectionError` and `UnexpectedResponse`, after which it is not connected;
/// `RequestRefused` for a hello.
class Session {
public:
    struct Observers {
        std::function<void(const Event&)> event;
        bool eventsAtOnce = false;
        std::function<void(const Reread&)> reread;
        std::function<void()> connected;
        std::function<void(const std::string& reason)> disconnected;
    };
    /// Takes a frame that came; the last one that it waits for returns true.
    using FrameListener = std::function<bool(Wire::HostFrame& frame)>;

    explicit Session(Options options);

    /// Waits for the answer to hello; connects if need be.
    void connect();
    bool isConnected() const { return connection.has_value(); }
    const std::string& socketPath() const { return path; }
    /// After `connect`.
    const std::string& wireVersion() const { return version; }
    /// Connects. Errors: also `NotSupported`, unless the host takes `what`.
    void requireAnswers(const std::string& what);

    std::string newMessageId();
    /// The greater of now and the newest time stamp among the events received, so that the host does not see the
    /// request as older than one before it.
    std::int64_t newTimestamp() const;
    /// Sends frames, connecting if need be, and receives until `onFrame` returns true.
    void exchange(const std::vector<std::string>& frames, const FrameListener& onFrame);
    /// Sends a request and waits for its reply. Errors: also `RequestRefused`.
    Wire::HostFrame ask(const std::string& messageId, const std::string& frame);
    /// Does the host of this connection answer requests that ask for it? Not known: false.
    bool answers() const { return hasAnswered; }
    void noteAnswer() { hasAnswered = true; }

    /// Whose requests are sent; empty: the client's own.
    std::string caller;
    Observers observers;
    int descriptor() const { return wakeUp.descriptor(); }
    /// Does what is due: receives, connects, calls observers.
    void process();
    /// Calls the observer of events now, if it asked for that, unless another observer is to be called first.
    void tellEventsAtOnce();
    /// Ends the loop of `Client::run`.
    bool isStopped = false;

private:
    struct Connected {};
    struct Disconnected {
        std::string reason;
    };
    using Notification = std::variant<Event, Reread, Connected, Disconnected>;

    /// Whatever happens, the next thing to do is done in time.
    struct TimerSetter {
        Session& session;
        ~TimerSetter();
    };

    void open(Connection::WhenBusy whenBusy);
    void sendHello(const std::optional<Wire::LastEvent>& resume);
    /// Ends the connection, and the next attempt waits longer.
    void lose(const std::string& reason);
    /// Calls `action`; what it throws ends the connection.
    template <typename Action>
    void guard(const Action& action);

    /// Takes an event, a notice or what belongs to hello. Returns: whether it belongs to hello.
    bool take(const Wire::HostFrame& frame);
    void takeLines();
    void takeHello(const Wire::HostFrame& answer);
    void takeHelloRefusal(const Wire::HostFrame& refusal);
    void endGreeting(std::string hostVersion, EventOrder::Told told);

    void queue(EventOrder::Told told);
    void tell();
    void tellNext();
    void setTimer();

    Options options;
    WakeUp wakeUp;
    std::optional<Connection> connection;
    std::string path;
    /// Of the ids of messages, the hello's included.
    const std::string idPrefix;
    int lastMessageId = 0;
    std::int64_t newestTimestamp = 0;
    bool hasAnswered = false;

    /// A hello has no answer yet.
    bool isGreeting = false;
    bool helloResumes = false;
    Connection::Deadline helloDeadline;
    std::string version;
    EventOrder order;

    std::deque<Notification> notifications;
    /// Observers know that there is no connection.
    bool hasToldLoss = false;
    std::chrono::milliseconds interval;
    std::chrono::steady_clock::time_point nextAttempt = std::chrono::steady_clock::now();
};

}  // namespace SettingsClient
