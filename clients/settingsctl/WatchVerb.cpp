#include <cerrno>
#include <csignal>
#include <cstdio>

#include <sys/signalfd.h>
#include <unistd.h>

#include "Verbs.h"
#include "Wire/Requests.h"
#include "connection/Refusals.h"

namespace SettingsCtl {

namespace {

/// SIGINT and SIGTERM as a descriptor to poll.
class Interruption {
public:
    Interruption() {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGINT);
        sigaddset(&signals, SIGTERM);
        ::sigprocmask(SIG_BLOCK, &signals, nullptr);
        number = ::signalfd(-1, &signals, SFD_CLOEXEC);
    }
    ~Interruption() { ::close(number); }
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    int descriptor() const { return number; }
    bool happened() const {
        pollfd wanted{number, POLLIN, 0};
        return ::poll(&wanted, 1, 0) == 1;
    }

private:
    int number;
};

void printFrame(const Context& context, const Wire::HostFrame& frame) {
    const auto change = frame.change();
    const auto reread = frame.reread();
    if (!change && !reread) {
        return;
    }
    if (context.style.json) {
        printLine(context.style, frame.text());
    } else if (change) {
        printLine(context.style, changeLine(context.style, change->key, change->from, change->to));
    } else {
        std::string line = "reread:";
        for (const auto& key : *reread) {
            line += (line.back() == ':' ? " " : ", ") + key;
        }
        printLine(context.style, escaped(line));
    }
}

/// Scripts wait for this line before they make the changes that they watch.
void printReady(const Context& context, const SettingsClient::Connection& connection) {
    if (!context.style.quiet) {
        std::fprintf(stderr, "settingsctl: watching %s\n", escaped(connection.socketPath()).c_str());
    }
}

/// Reports why standard output cannot be written: it is closed, or a pipe without a reader.
[[noreturn]] void failForOutput() {
    pollfd output{STDOUT_FILENO, 0, 0};
    ::poll(&output, 1, 0);
    throw unwritableOutput((output.revents & POLLNVAL) != 0 ? EBADF : EPIPE);
}

}  // namespace

ExitStatus watch(const Context& context) {
    const Interruption interruption;
    SettingsClient::Connection connection(context.settingsSockets, context.timeout);
    // The reply means that the host serves this connection and sends it all later changes.
    const std::string query = "watch";
    connection.send({Wire::bareRequest(Wire::IS_ORLIA_SELECTED_VA, query)});
    auto deadline = connection.deadline();
    std::vector<pollfd> ends{{interruption.descriptor(), POLLIN, 0}};
    if (!context.style.quiet) {
        ends.push_back({STDOUT_FILENO, 0, 0});
    }
    while (const auto line = connection.receive(deadline, ends)) {
        const Wire::HostFrame frame(*line);
        SettingsClient::throwIfRefusal(frame);
        if (frame.isReplyTo(query)) {
            deadline.reset();
            printReady(context, connection);
        } else {
            printFrame(context, frame);
        }
    }
    if (!interruption.happened()) {
        failForOutput();
    }
    return DONE;
}

}  // namespace SettingsCtl
