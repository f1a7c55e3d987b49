#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <set>
#include <utility>

#include <fcntl.h>
#include <poll.h>

#include "Interruption.h"
#include "SettingsClient/Errors.h"
#include "Verbs.h"
#include "Wire/HostFrame.h"
#include "Wire/LocalTime.h"
#include "connection/Connection.h"
#include "connection/Refusals.h"
#include "scenarios/Personal.h"

namespace SettingsCtl {

namespace {

/// A scenario, written line by line.
class ScenarioFile {
public:
    /// Errors: `Failure` (REFUSED).
    explicit ScenarioFile(std::string fileName) : name(std::move(fileName)) {
        if (name != "-") {
            // Only for the user, since it may hold names.
            const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
            file.reset(descriptor < 0 ? nullptr : ::fdopen(descriptor, "w"));
            if (!file) {
                fail();
            }
        }
    }

    /// Complete in the file when it returns.
    void write(const std::string& line) {
        if (!file) {
            print(line + "\n");
        } else if (std::fprintf(file.get(), "%s\n", line.c_str()) < 0 || std::fflush(file.get()) != 0) {
            fail();
        }
    }

private:
    [[noreturn]] void fail() const { throw Failure(REFUSED, "cannot write '" + name + "': " + std::strerror(errno)); }

    const std::string name;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file{nullptr, std::fclose};
};

/// Makes steps of the copies that a host sends of what passes.
class Recorder {
public:
    Recorder(ScenarioFile& scenario, bool recordsValues) : file(scenario), withValues(recordsValues) {}

    /// `saved`: the reply to "save".
    void begin(const Wire::HostFrame& saved) {
        file.write(R"({"scenario": 1, "title": "Recorded )" + Wire::localTimeText(std::chrono::system_clock::now()) +
                   R"(", "world": )" + shown(saved.objectAt({"world"})) + "}");
    }

    void take(const Wire::HostFrame& copy) {
        const auto time = copy.integerAt({"trace", "timestamp"});
        const auto listener = copy.textAt({"trace", "door"});
        const bool isOurs = copy.textAt({"trace", "direction"}) == "in";
        if (!time || !listener) {
            throw SettingsClient::UnexpectedResponse("not a device socket");
        }
        const auto client = copy.integerAt({"trace", "client"});
        const std::string at = client ? *listener + "-" + std::to_string(*client) : *listener;
        // The clock may have been set back.
        lastTime = std::max(lastTime, *time - (firstTime < 0 ? firstTime = *time : firstTime));
        if (copy.booleanAt({"trace", "closed"}) != true) {
            takeText(at, isOurs, copy.textAt({"trace", "text"}).value_or(""));
        } else if (open.erase(at) > 0) {
            write(at, isOurs ? R"("closed": true)" : R"("closedByHost": true)");
        }
    }

    void hostEnded() {
        for (const auto& at : open) {
            write(at, R"("closedByHost": true)");
        }
    }

private:
    /// The host copies no reply to it, which has the key of the pages.
    static bool asksForPage(const rapidjson::Document& frame) {
        return !frame.HasMember("type") && !frame.HasMember("batch") && frame.HasMember("page");
    }

    void takeText(const std::string& at, bool isOurs, const std::string& text) {
        rapidjson::Document frame;
        frame.Parse<Utils::jsonParseFlags>(text.data(), text.size());
        const bool isFrame = !frame.HasParseError() && frame.IsObject();
        if (isFrame && asksForPage(frame)) {
            return;
        }
        if (at != "all") {
            open.insert(at);
        }
        const std::string member = std::string(isOurs ? "sent" : "received") + (isFrame ? "" : "Text");
        std::string recorded = shown(text);
        if (isFrame) {
            // In one line.
            std::replace(recorded.begin(), recorded.end(), '\n', ' ');
            std::replace(recorded.begin(), recorded.end(), '\r', ' ');
        }
        write(at, "\"" + member + "\": " + (isFrame ? recorded : jsonString(recorded)));
    }

    void write(const std::string& at, const std::string& what) {
        file.write(R"({"time": )" + std::to_string(lastTime) + R"(, "at": ")" + at + R"(", )" + what + "}");
    }

    std::string shown(const std::string& text) { return withValues ? text : personal.replacedIn(text); }

    ScenarioFile& file;
    const bool withValues;
    PersonalValues personal;
    /// Connections that have steps and have not ended.
    std::set<std::string> open;
    std::int64_t firstTime = -1;
    std::int64_t lastTime = 0;
};

bool isCopy(const Wire::HostFrame& frame) {
    return frame.textAt({"trace", "door"}).has_value();
}

/// The next frame that is a reply; `onCopy` gets the copies before it.
Wire::HostFrame replyAfter(SettingsClient::Connection& connection,
                           const std::function<void(const Wire::HostFrame&)>& onCopy) {
    const auto deadline = connection.deadline();
    for (;;) {
        Wire::HostFrame frame(connection.receive(deadline));
        SettingsClient::throwIfRefusal(frame);
        if (!isCopy(frame)) {
            return frame;
        }
        onCopy(frame);
    }
}

/// Records until interrupted. What passed before is recorded, too.
void serve(SettingsClient::Connection& connection, const Interruption& interruption, Recorder& recorder) {
    const auto record = [&](const Wire::HostFrame& copy) { recorder.take(copy); };
    for (;;) {
        while (const auto line = connection.takeLine()) {
            record(Wire::HostFrame(*line));
        }
        std::array<pollfd, 2> wanted{pollfd{connection.descriptor(), POLLIN, 0},
                                     pollfd{interruption.descriptor(), POLLIN, 0}};
        ::poll(wanted.data(), wanted.size(), -1);
        if (wanted[1].revents != 0) {
            connection.send({R"({"command":"trace","enabled":false})"});
            replyAfter(connection, record);
            return;
        }
        connection.readAvailable();
    }
}

}  // namespace

ExitStatus record(const Context& context, const std::string& file, bool withValues) {
    SettingsClient::Connection connection(context.deviceSockets, context.timeout);
    // What passes before the world is saved is in the world.
    connection.send(
        {R"({"command":"trace","enabled":true,"connections":true})", R"({"command":"save","withValues":true})"});
    const auto forget = [](const Wire::HostFrame&) {};
    replyAfter(connection, forget);
    const Wire::HostFrame world = replyAfter(connection, forget);
    ScenarioFile scenario(file);
    Recorder recorder(scenario, withValues);
    recorder.begin(world);
    const Interruption interruption;
    printWarning(context.style, "recording " + connection.socketPath());
    try {
        serve(connection, interruption, recorder);
    } catch (const SettingsClient::ConnectionError&) {
        recorder.hostEnded();
        throw;
    }
    return DONE;
}

}  // namespace SettingsCtl
