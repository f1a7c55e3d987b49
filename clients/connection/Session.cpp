#include "connection/Session.h"

#include <algorithm>
#include <utility>

#include <unistd.h>

#include "Wire/RefusalCode.h"
#include "connection/Refusals.h"

namespace SettingsClient {

namespace {

constexpr std::chrono::milliseconds shortestInterval{100};
constexpr std::chrono::milliseconds longestInterval{5000};

/// Of a host that knows no hello.
constexpr const char* firstVersion = "1.0.0";

template <typename... Arguments>
void call(const std::function<void(Arguments...)>& observer, Arguments... arguments) {
    // It may be replaced while it is called.
    if (const auto current = observer) {
        current(arguments...);
    }
}

}  // namespace

Session::Session(Options chosen)
    : options(std::move(chosen)),
      idPrefix(options.name + "-" + std::to_string(::getpid()) + "-"),
      interval(shortestInterval) {
    setTimer();
}

std::string Session::newMessageId() {
    return idPrefix + std::to_string(++lastMessageId);
}

std::int64_t Session::newTimestamp() const {
    using namespace std::chrono;
    const std::int64_t now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    return std::max(now, newestTimestamp);
}

template <typename Action>
void Session::guard(const Action& action) {
    try {
        action();
    } catch (const Wire::MalformedFrame& fault) {
        const UnexpectedResponse error = notAHost(fault);
        lose(error.what());
        throw error;
    } catch (const std::runtime_error& error) {
        lose(error.what());
        throw;
    }
}

void Session::connect() {
    if (!connection || isGreeting) {
        exchange({}, [this](const Wire::HostFrame&) { return !isGreeting; });
    }
}

void Session::requireAnswers(const std::string& what) {
    connect();
    if (version == firstVersion) {
        throw NotSupported("the host at " + path + " is of version 1.0 and has no " + what);
    }
}

void Session::exchange(const std::vector<std::string>& frames, const FrameListener& onFrame) {
    const auto sendAndReceive = [&] {
        if (!connection) {
            open(Connection::WhenBusy::WAIT);
        }
        connection->send(frames);
        const auto deadline = connection->deadline();
        for (bool isOver = false; !isOver;) {
            Wire::HostFrame frame(connection->receive(deadline));
            const bool wasHello = take(frame);
            isOver = (!wasHello || frames.empty()) && onFrame(frame);
        }
        takeLines();
    };
    const TimerSetter setter{*this};
    guard(sendAndReceive);
}

Wire::HostFrame Session::ask(const std::string& messageId, const std::string& frame) {
    std::optional<Wire::HostFrame> reply;
    exchange({frame}, [&](Wire::HostFrame& received) {
        if (!received.isReplyTo(messageId) && !received.refusal()) {
            return false;
        }
        reply.emplace(std::move(received));
        return true;
    });
    throwIfRefusal(*reply);
    return std::move(*reply);
}

void Session::open(Connection::WhenBusy whenBusy) {
    connection.emplace(options.sockets, options.timeout, whenBusy);
    path = connection->socketPath();
    wakeUp.watch(connection->descriptor());
    version.clear();
    sendHello(order.beginConnection());
}

void Session::sendHello(const std::optional<Wire::LastEvent>& resume) {
    isGreeting = true;
    helloResumes = resume.has_value();
    helloDeadline = connection->deadline();
    connection->send({Wire::helloFrame(idPrefix + "hello", options.name, resume)});
}

void Session::lose(const std::string& reason) {
    connection.reset();
    isGreeting = false;
    // The next host may be another one.
    hasAnswered = false;
    nextAttempt = std::chrono::steady_clock::now() + interval;
    interval = std::min(2 * interval, longestInterval);
    if (!hasToldLoss && observers.disconnected) {
        notifications.emplace_back(Disconnected{reason});
    }
    hasToldLoss = true;
}

bool Session::take(const Wire::HostFrame& frame) {
    newestTimestamp = std::max(newestTimestamp, frame.timestamp().value_or(newestTimestamp));
    if (frame.isEvent()) {
        queue(order.takeEvent(eventOf(frame)));
    } else if (auto keys = frame.reread()) {
        queue(order.takeNotice(frame, std::move(*keys)));
    } else if (isGreeting && frame.isReplyTo(idPrefix + "hello")) {
        takeHello(frame);
        return true;
    } else if (isGreeting && frame.refusal()) {
        takeHelloRefusal(frame);
        return true;
    }
    return false;
}

void Session::takeLines() {
    while (auto line = connection->takeLine()) {
        take(Wire::HostFrame(std::move(*line)));
    }
}

void Session::takeHello(const Wire::HostFrame& answer) {
    auto hostVersion = answer.textAt({"hello", "version"});
    if (!hostVersion) {
        throw Wire::MalformedFrame();
    }
    if (hostVersion->rfind("1.", 0) != 0) {
        throw ConnectionError("the host at " + path + " speaks version " + *hostVersion +
                              " of the protocol, this client version 1");
    }
    endGreeting(std::move(*hostVersion), order.takeHello(answer));
}

void Session::takeHelloRefusal(const Wire::HostFrame& refusal) {
    const std::string code = refusal.refusal()->code;
    if (code == Wire::RefusalCode::unknownType) {
        endGreeting(firstVersion, order.takeRefusal(refusal));
    } else if (code == Wire::RefusalCode::busy && helloResumes) {
        order.giveUpResuming();
        sendHello(std::nullopt);
    } else {
        throwIfRefusal(refusal);
    }
}

void Session::endGreeting(std::string hostVersion, EventOrder::Told told) {
    version = std::move(hostVersion);
    isGreeting = false;
    interval = shortestInterval;
    hasToldLoss = false;
    queue(std::move(told));
    if (observers.connected) {
        notifications.emplace_back(Connected());
    }
}

void Session::queue(EventOrder::Told told) {
    if (observers.event) {
        for (auto& event : told.events) {
            notifications.emplace_back(std::move(event));
        }
    }
    if (observers.reread && told.reread) {
        notifications.emplace_back(std::move(*told.reread));
    }
}

void Session::process() {
    const TimerSetter setter{*this};
    try {
        guard([this] {
            const auto now = std::chrono::steady_clock::now();
            if (!connection && now >= nextAttempt) {
                open(Connection::WhenBusy::GIVE_UP);
            } else if (connection && notifications.empty()) {
                connection->readAvailable();
                takeLines();
                if (isGreeting && now >= helloDeadline) {
                    connection->failForMissingReply();
                }
            }
        });
    } catch (const InvalidSocketPath&) {
        throw;
    } catch (const std::runtime_error&) {
        // Observers are told, and the next attempt follows.
    }
    tell();
}

void Session::tellEventsAtOnce() {
    while (observers.eventsAtOnce && !notifications.empty() && std::holds_alternative<Event>(notifications.front())) {
        tellNext();
    }
}

void Session::tell() {
    while (!notifications.empty()) {
        tellNext();
    }
}

void Session::tellNext() {
    const Notification next = std::move(notifications.front());
    notifications.pop_front();
    if (const auto* const event = std::get_if<Event>(&next)) {
        call<const Event&>(observers.event, *event);
    } else if (const auto* const reread = std::get_if<Reread>(&next)) {
        call<const Reread&>(observers.reread, *reread);
    } else if (const auto* const disconnected = std::get_if<Disconnected>(&next)) {
        call<const std::string&>(observers.disconnected, disconnected->reason);
    } else {
        call<>(observers.connected);
    }
}

Session::TimerSetter::~TimerSetter() {
    session.setTimer();
}

void Session::setTimer() {
    if (!notifications.empty()) {
        wakeUp.setTime(std::chrono::steady_clock::now());
    } else if (!connection) {
        wakeUp.setTime(nextAttempt);
    } else {
        wakeUp.setTime(isGreeting ? std::optional(helloDeadline) : std::nullopt);
    }
}

}  // namespace SettingsClient
