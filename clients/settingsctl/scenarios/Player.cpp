#include "scenarios/Player.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <poll.h>
#include <unistd.h>

#include "Failure.h"
#include "Wire/Requests.h"
#include "connection/DeviceCommand.h"

namespace SettingsCtl {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// Ends the play.
class Deviation : public std::runtime_error {
public:
    explicit Deviation(Difference what) : std::runtime_error(what.message), difference(std::move(what)) {}

    const Difference difference;
};

/// Every line at a device socket has one reply.
bool isDeviceCommand(const std::string& at, const std::string& text) {
    return !isSettingsConnection(at) && text.find_first_not_of(" \t\r\n") != std::string::npos;
}

bool isTrace(const std::string& frame) {
    return frame.rfind(R"({"trace":)", 0) == 0;
}

}  // namespace

Player::Player(const Scenario& played, PlayOptions playOptions, OwnHost* ownHost)
    : scenario(played),
      options(std::move(playOptions)),
      host(ownHost),
      fencePrefix("settingsctl-replay-" + std::to_string(::getpid()) + "-") {}

std::optional<Difference> Player::play() {
    try {
        playAll();
        return std::nullopt;
    } catch (const Deviation& deviation) {
        return deviation.difference;
    }
}

void Player::playAll() {
    for (const auto& step : scenario.steps) {
        line = step.line;
        take(step);
    }
    awaitHost(nullptr);
    for (auto& [name, link] : links) {
        refuseMore(link);
    }
}

void Player::take(const Step& step) {
    switch (step.kind) {
        case StepKind::SENT:
            send(step);
            break;
        case StepKind::RECEIVED:
        case StepKind::CLOSED_BY_HOST:
            expect(step);
            break;
        case StepKind::CLOSED:
            close(step);
            break;
        case StepKind::START:
            awaitTime(step);
            host->start();
            comparison.hostStarted();
            break;
        default:
            endHost(step);
    }
}

void Player::expect(const Step& step) {
    if (step.at != "all") {
        Link& link = linkAt(step);
        link.isClosing = step.kind == StepKind::CLOSED_BY_HOST;
        link.expected.push_back(&step);
        match(link);
        return;
    }
    for (auto& [name, link] : links) {
        if (isSettingsConnection(name) && !link.isClosing) {
            link.expected.push_back(&step);
            match(link);
        }
    }
}

void Player::send(const Step& step) {
    Link& link = linkAt(step);
    catchUp(step, &link);
    if (link.hasEnded) {
        throw Deviation({step.line, link.name + ": the host has closed the connection"});
    }
    link.channel->send(comparison.forThisRun(step.text));
    link.needsFence = true;
    link.unanswered += isDeviceCommand(link.name, step.text) ? 1 : 0;
}

void Player::close(const Step& step) {
    catchUp(step, nullptr);
    Link& link = links.at(step.at);
    // A recording does not always know who closed it.
    link.isClosing = true;
    refuseMore(link);
    links.erase(step.at);
}

void Player::endHost(const Step& step) {
    const bool isKilled = step.kind == StepKind::KILL;
    if (isKilled) {
        awaitExpected();
        awaitTime(step);
        host->kill();
        lastTime = step.time;
    } else {
        catchUp(step, nullptr);
        host->stop();
    }
    const bool haveEnded = pumpUntil(steady_clock::now() + options.timeout, [this] {
        return std::all_of(links.begin(), links.end(), [](const auto& entry) { return entry.second.hasEnded; });
    });
    if (!haveEnded) {
        throw Deviation({step.line, "the host does not close its connections"});
    }
    for (auto& [name, link] : links) {
        link.isClosing = true;
        if (!isKilled) {
            refuseMore(link);
        }
    }
    links.clear();
    const std::string end = isKilled ? "" : host->end();
    if (!end.empty()) {
        throw Deviation({step.line, "settings-host: " + end});
    }
}

Player::Link& Player::linkAt(const Step& step) {
    const auto found = links.find(step.at);
    if (found != links.end() && !found->second.isClosing) {
        return found->second;
    }
    catchUp(step, nullptr);
    Link& link = links[step.at];
    link.name = step.at;
    link.channel = open(step.at);
    // The host knows the connection only when it has accepted it.
    fence(link);
    return link;
}

std::unique_ptr<Channel> Player::open(const std::string& at) const {
    return isPage(at) ? pageChannel(addressOfPages(), options.timeout)
                      : lineChannel(isSettingsConnection(at) ? options.settingsSockets : options.deviceSockets,
                                    options.timeout);
}

/// Asked for each page: it is a new one after a start, or a new key.
std::string Player::addressOfPages() const {
    const auto reply =
        SettingsClient::executeDeviceCommand(options.deviceSockets, options.timeout, R"({"command":"page"})");
    return reply.textAt({"page", "address"}).value_or("");
}

void Player::catchUp(const Step& step, const Link* ours) {
    awaitHost(ours);
    awaitTime(step);
    lastTime = step.time;
}

void Player::awaitHost(const Link* ours) {
    awaitExpected();
    for (auto& [name, link] : links) {
        if (link.needsFence && &link != ours) {
            fence(link);
        }
    }
}

void Player::awaitExpected() {
    milliseconds latest = lastTime;
    for (const auto& [name, link] : links) {
        latest = link.expected.empty() ? latest : std::max(latest, link.expected.back()->time);
    }
    // The host may take as long as it did then.
    const auto deadline = steady_clock::now() + options.timeout + (latest - lastTime);
    const auto isDone = [this] {
        return std::all_of(links.begin(), links.end(), [](const auto& entry) { return entry.second.expected.empty(); });
    };
    if (!pumpUntil(deadline, isDone)) {
        failForMissing();
    }
    for (auto link = links.begin(); link != links.end();) {
        link = link->second.isClosing ? links.erase(link) : std::next(link);
    }
}

void Player::failForMissing() const {
    const Step* first = nullptr;
    std::string name;
    for (const auto& [linkName, link] : links) {
        if (!link.expected.empty() && (first == nullptr || link.expected.front()->line < first->line)) {
            first = link.expected.front();
            name = linkName;
        }
    }
    throw Deviation({first->line,
                     first->kind == StepKind::CLOSED_BY_HOST ? name + ": the host did not close the connection"
                                                             : name + " did not receive the expected frame",
                     first->text});
}

void Player::awaitTime(const Step& step) {
    if (options.speed > 0) {
        pumpUntil(begin + std::chrono::duration_cast<milliseconds>(step.time / options.speed), [] { return false; });
    }
}

void Player::fence(Link& link) {
    link.needsFence = false;
    if (link.hasEnded) {
        return;
    }
    if (isSettingsConnection(link.name)) {
        link.fence = fencePrefix + std::to_string(++fences);
        link.channel->send(Wire::bareRequest(Wire::IS_ORLIA_SELECTED_VA, link.fence));
    }
    const auto isDone = [&] { return (link.fence.empty() && link.unanswered == 0) || link.hasEnded; };
    if (!pumpUntil(steady_clock::now() + options.timeout, isDone)) {
        throw Deviation({line, link.name + ": the host does not reply"});
    }
}

void Player::refuseMore(Link& link) {
    // The host has handled all that was sent, so what it led to has come.
    readFrom(link);
    if (!link.arrived.empty()) {
        throw Deviation({line, link.name + " received an unexpected frame", "", link.arrived.front()});
    }
    if (link.hasEnded && !link.isClosing) {
        throw Deviation({line, link.name + ": the host has closed the connection"});
    }
}

bool Player::pumpUntil(Time deadline, const std::function<bool()>& isDone) {
    while (!isDone()) {
        std::vector<Link*> polled;
        std::vector<pollfd> wanted{{interruption.descriptor(), POLLIN, 0}};
        for (auto& [name, link] : links) {
            if (!link.hasEnded && link.channel) {
                polled.push_back(&link);
                wanted.push_back({link.channel->descriptor(), POLLIN, 0});
            }
        }
        const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
        const int ready =
            ::poll(wanted.data(), wanted.size(), static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (wanted.front().revents != 0) {
            throw Failure(REFUSED, "interrupted");
        }
        if (ready == 0 && left.count() <= 0) {
            return false;
        }
        for (std::size_t index = 0; index < polled.size(); ++index) {
            if (wanted[index + 1].revents != 0) {
                readFrom(*polled[index]);
                match(*polled[index]);
            }
        }
    }
    return true;
}

void Player::readFrom(Link& link) {
    if (link.hasEnded) {
        return;
    }
    link.hasEnded = !link.channel->read();
    while (auto text = link.channel->take()) {
        if (text->find(fencePrefix) == std::string::npos) {
            link.unanswered -= link.unanswered > 0 && !isTrace(*text) ? 1 : 0;
            link.arrived.push_back(std::move(*text));
        } else if (!link.fence.empty() && text->find("\"" + link.fence + "\"") != std::string::npos) {
            link.fence.clear();
        }
    }
}

void Player::match(Link& link) {
    while (!link.expected.empty() && (link.hasEnded || !link.arrived.empty())) {
        const Step& step = *link.expected.front();
        if (step.kind == StepKind::CLOSED_BY_HOST) {
            if (!link.arrived.empty()) {
                throw Deviation(
                    {step.line, link.name + ": the host did not close the connection", "", link.arrived.front()});
            }
        } else if (link.arrived.empty()) {
            throw Deviation({step.line, link.name + ": the host has closed the connection", step.text});
        } else {
            compare(link, step, link.arrived.front());
            link.arrived.pop_front();
            ++frames;
        }
        link.expected.pop_front();
    }
}

void Player::compare(const Link& link, const Step& step, const std::string& got) {
    if (const auto difference = comparison.difference(step.text, got)) {
        const std::string place = difference->path.empty() ? "" : ", at " + difference->path;
        throw Deviation({step.line, link.name + " received a different frame" + place, difference->expected, got});
    }
}

}  // namespace SettingsCtl
