#include "simulation/Run.h"

#include <algorithm>

#include "model/Json.h"
#include "model/Utf8.h"

namespace SettingsSimulation {

using SettingsHandlerFuzz::stringText;

namespace {

constexpr std::size_t fewPossibilities = 16;
constexpr const char* everything = R"({"type":7,"messageId":"all","payload":{"settings":[]}})";

}  // namespace

Run::Run(std::uint64_t seed, bool writesSteps, KnownTexts allTexts)
    : choices(seed ^ 0x5eed5eed5eed5eedU),
      host(choices),
      judge(writesSteps),
      writes(writesSteps),
      knownTexts(std::move(allTexts)) {}

std::optional<Finding> Run::play(const std::vector<Operation>& operations) {
    try {
        start();
        for (const auto& operation : operations) {
            ++doneOperations;
            perform(operation);
        }
        // What is late comes, too.
        advance(60000);
    } catch (const Finding& finding) {
        KnownTexts texts = knownTexts;
        texts.insert(judge.texts().begin(), judge.texts().end());
        for (const auto& entry : open) {
            for (const auto& frame : judge.awaited(entry.second->number(), texts)) {
                write(nameOf(entry.second->number()), "received", frame);
            }
        }
        return finding;
    }
    return std::nullopt;
}

void Run::perform(const Operation& operation) {
    using Type = Operation::Type;
    start();
    switch (operation.type) {
        case Type::SEND:
            send(operation.slot, operation.text);
            break;
        case Type::SEND_BYTES:
            if (const auto connection = client(operation.slot)) {
                judge.sentBytes(connection->number(), operation.text);
                connection->sendBytes(operation.text);
            }
            break;
        case Type::SEND_PART:
            sendPart(operation);
            break;
        case Type::RESUME:
            resume(operation);
            break;
        case Type::CLOSE:
            close(operation.slot);
            break;
        case Type::END_OUTPUT:
            endOutput(operation.slot);
            break;
        case Type::PAUSE:
        case Type::READ:
            if (const auto connection = client(operation.slot)) {
                setReading(*connection, operation.type == Type::READ);
            }
            break;
        case Type::ADVANCE:
            return advance(operation.number);
        default:
            return performAtHost(operation);
    }
    proceed(operation.steps);
}

void Run::performAtHost(const Operation& operation) {
    using Type = Operation::Type;
    switch (operation.type) {
        case Type::KILL:
            observe(false);
            host.kill();
            host.settle();
            look(false, false);
            return end("kill");
        case Type::POWER_CUT:
            observe(false);
            host.powerCut();
            return end("kill");
        case Type::STOP:
            return stop();
        case Type::KILL_AT:
            host.killAtDiskCall(operation.number);
            break;
        case Type::POWER_CUT_AT:
            host.powerCutAtDiskCall(operation.number);
            break;
        case Type::FAIL_AT:
            host.failDiskCalls(operation.number, operation.other);
            break;
        case Type::POWER_CUT_TWICE:
            observe(false);
            host.powerCut();
            end("kill");
            host.powerCutAtDiskCall(operation.number);
            return;
        default:
            break;
    }
    proceed(operation.steps);
}

void Run::stop() {
    proceed(-1);
    if (host.state() != SimulatedHost::State::RUNNING) {
        return;
    }
    host.stop();
    endStop();
}

/// What is stored last may still meet a kill or a power cut.
void Run::endStop() {
    host.settle();
    host.advance(std::chrono::seconds(1));
    const bool isDead = host.state() == SimulatedHost::State::DEAD;
    look(false, isDead);
    end(isDead ? "kill" : "stop");
}

/// After it a host runs.
void Run::start() {
    for (int attempt = 0; host.state() != SimulatedHost::State::RUNNING; ++attempt) {
        if (attempt == 5) {
            throw Finding("the host does not start", "a start", host.startFailure());
        }
        if (!host.start()) {
            continue;
        }
        hasStarted();
        proceed(-1);
        if (host.state() == SimulatedHost::State::RUNNING) {
            send(0, everything);
            send(7, R"({"command":"show"})");
            proceed(-1);
        }
    }
}

void Run::proceed(int steps) {
    if (steps < 0) {
        host.settle();
        return observe(true);
    }
    for (int step = 0; step < steps; ++step) {
        host.step();
    }
    observe(false);
}

void Run::advance(std::int64_t milliseconds) {
    proceed(-1);
    // In parts, so that what comes too early is seen.
    while (milliseconds > 0 && host.state() == SimulatedHost::State::RUNNING) {
        std::int64_t part = milliseconds;
        if (const auto timer = host.nextTimer()) {
            part = std::clamp<std::int64_t>(timer->count(), 1, milliseconds);
        }
        host.advance(std::chrono::milliseconds(part));
        milliseconds -= part;
        observe(true);
    }
}

void Run::observe(bool isSettled) {
    const bool isDead = host.state() == SimulatedHost::State::DEAD && judge.isUp();
    look(isSettled, isDead);
    if (isDead) {
        return end("kill");
    }
    if (judge.restartWasAsked()) {
        return restart();
    }
    if (judge.possibilities() > fewPossibilities && !isRepairing) {
        decide();
    }
    for (auto entry = open.begin(); entry != open.end();) {
        entry = entry->second->isClosedByHost() ? forget(entry) : std::next(entry);
    }
}

/// When it reads again, the host handles what it has sent meanwhile.
void Run::setReading(Connection& connection, bool reads) {
    // A host that ended meanwhile took its connections with it.
    const auto isThere = [&] {
        return std::any_of(open.begin(), open.end(),
                           [&](const auto& entry) { return entry.second.get() == &connection; });
    };
    if (reads && !isRepairing && isThere() && judge.isTooMuch(connection.number())) {
        repairDisk();
    }
    if (isThere()) {
        judge.reads(connection.number(), reads);
        connection.setReading(reads);
    }
}

/// Lets everything come, so that the judge knows what happened.
void Run::decide() {
    for (const auto& entry : Connections(open)) {
        setReading(*entry.second, true);
    }
    if (!judge.isUp()) {
        return;
    }
    host.settle();
    look(true, host.state() == SimulatedHost::State::DEAD);
    if (host.state() == SimulatedHost::State::RUNNING && judge.possibilities() > fewPossibilities) {
        host.advance(std::chrono::seconds(1));
        look(true, host.state() == SimulatedHost::State::DEAD);
    }
    if (host.state() == SimulatedHost::State::DEAD && judge.isUp()) {
        end("kill");
    } else if (judge.isUp() && judge.possibilities() > fewPossibilities) {
        repairDisk();
    }
}

/// Ends what makes it unclear what is stored, and reads all.
void Run::repairDisk() {
    isRepairing = true;
    if (const auto device = client(7)) {
        setReading(*device, true);
    }
    send(7, R"({"command":"fault","name":"storage-failing","enabled":false})");
    proceed(-1);
    send(0, everything);
    send(0, R"({"messageId":"all","history":{}})");
    send(7, R"({"command":"show"})");
    proceed(-1);
    isRepairing = false;
}

Run::Connections::iterator Run::forget(Connections::iterator entry) {
    write(nameOf(entry->second->number()), "closedByHost", "");
    judge.closed(entry->second->number());
    return open.erase(entry);
}

/// The host restarts by itself.
void Run::restart() {
    endStop();
    if (host.state() == SimulatedHost::State::RUNNING) {
        hasStarted();
    }
}

void Run::look(bool isSettled, bool isCrashed) {
    Judge::Observed observed;
    observed.handled = host.takeHandled();
    observed.before = lastLook;
    observed.now = lastLook = host.now();
    observed.isSettled = isSettled;
    observed.isRunning = host.state() == SimulatedHost::State::RUNNING;
    observed.isCrashed = isCrashed;
    observed.diskFailed = host.diskFailures() != diskFailures;
    diskFailures = host.diskFailures();
    observed.diskWasUsed = host.diskCalls() != diskCalls;
    diskCalls = host.diskCalls();
    for (const auto& handled : observed.handled) {
        if (!writes) {
            break;
        }
        write(nameOf(handled.connection), "sent", handled.frame.value_or(std::string(70000, '{')));
    }
    observed.connections.reserve(open.size());
    for (const auto& [slot, connection] : open) {
        observed.connections.push_back(
            {connection->number(), connection->take(), connection->isClosedByHost(), connection->closeStatus()});
    }
    judge.observe(observed);
    for (const auto& came : observed.connections) {
        for (const auto& frame : came.frames) {
            write(nameOf(came.connection), "received", frame);
        }
    }
    noteRun();
}

/// The host is gone.
void Run::end(const char* how) {
    write("host", "did", how);
    noteRun();
    host.takeHandled();
    open.clear();
    judge.ended();
}

void Run::hasStarted() {
    host.takeHandled();
    if (++starts > 1) {
        write("host", "did", "start");
    }
    judge.started(host.storedSettings());
    diskFailures = host.diskFailures();
    // No two hosts start at the same time.
    host.advance(std::chrono::milliseconds(1));
}

void Run::noteRun() {
    if (!judge.isUp()) {
        return;
    }
    const std::string& run = judge.run();
    if (!run.empty() && (runs.empty() || runs.back() != run)) {
        runs.push_back(run);
    }
}

std::shared_ptr<Connection> Run::client(std::size_t slot) {
    const auto found = open.find(slot);
    if (found != open.end() && found->second->isOpen()) {
        return found->second;
    }
    if (found != open.end()) {
        close(slot);
    }
    auto connection = host.connect(slots()[slot]);
    judge.connected(connection->number(), slots()[slot]);
    open[slot] = connection;
    kinds[connection->number()] = slots()[slot];
    proceed(-1);
    // The host may have died meanwhile.
    return open.count(slot) > 0 && connection->isOpen() ? connection : nullptr;
}

void Run::send(std::size_t slot, const std::string& frame) {
    if (const auto connection = client(slot)) {
        if (connection->kind() == Kind::PAGE && !SettingsHandlerFuzz::isUtf8(frame)) {
            judge.mustBeClosed(connection->number(), {1007});
        } else {
            judge.sent(connection->number(), frame);
        }
        connection->send(frame);
    }
}

void Run::sendPart(const Operation& operation) {
    const auto connection = client(operation.slot);
    if (connection && slots()[operation.slot] != Kind::PAGE) {
        const std::string part = operation.text.substr(0, operation.text.size() / 2);
        judge.sentBytes(connection->number(), part);
        connection->sendBytes(part);
    }
    proceed(operation.steps);
    close(operation.slot);
}

void Run::resume(const Operation& operation) {
    if (!client(operation.slot)) {
        return;
    }
    const long sequence = std::max(0L, judge.newestSequence() - operation.number);
    std::string run = judge.run().empty() ? "unknown" : judge.run();
    if (operation.other == 1) {
        run = runs.size() > 1 ? runs[runs.size() - 2] : "unknown";
    } else if (operation.other == 2) {
        run = "other";
    }
    send(operation.slot, R"({"messageId":"r","hello":{)" +
                             (operation.text.empty() ? "" : "\"client\":" + stringText(operation.text) + ",") +
                             R"("resume":{"run":)" + stringText(run) + R"(,"sequence":)" + std::to_string(sequence) +
                             "}}}");
}

void Run::endOutput(std::size_t slot) {
    if (const auto connection = client(slot)) {
        judge.endedOutput(connection->number());
        connection->endOutput();
        proceed(-1);
        close(slot);
    }
}

void Run::close(std::size_t slot) {
    const auto found = open.find(slot);
    if (found == open.end()) {
        return;
    }
    write(nameOf(found->second->number()), "closed", "");
    found->second->close();
    judge.closed(found->second->number());
    open.erase(found);
}

std::string Run::nameOf(std::size_t connection) {
    if (!writes) {
        return "";
    }
    static const std::map<Kind, std::string> texts{
        {Kind::SOCKET, "socket"}, {Kind::PAGE, "page"}, {Kind::DEVICE, "device"}};
    auto& name = names[connection];
    if (name.empty()) {
        const Kind kind = kinds.at(connection);
        name = texts.at(kind) + "-" + std::to_string(++counts[kind]);
    }
    return name;
}

void Run::write(const std::string& at, const std::string& kind, const std::string& text) {
    if (writes) {
        written.push_back({host.now(), at, kind, text});
    }
}

}  // namespace SettingsSimulation
