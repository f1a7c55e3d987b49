#include <cerrno>
#include <csignal>
#include <cstdio>

#include <sys/signalfd.h>
#include <unistd.h>

#include "Connection.h"
#include "Verbs.h"
#include "Wire.h"

namespace SettingsCtl {

namespace {

/// SIGINT and SIGTERM as something to wait for.
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

void printFrame(const Context& context, const Frame& frame) {
    const auto change = frame.change();
    const auto reread = frame.reread();
    if (!change && !reread) {
        return;
    }
    if (context.style.json) {
        printLine(context.style, frame.text());
    } else if (change) {
        printLine(context.style, changeLine(change->key, change->from, change->to));
    } else {
        std::string line = "reread:";
        for (const auto& key : *reread) {
            line += (line.back() == ':' ? " " : ", ") + key;
        }
        printLine(context.style, escaped(line));
    }
}

/// Scripts wait for this line before they change what they watch.
void tellReady(const Context& context, const Connection& connection) {
    if (!context.style.quiet) {
        std::fprintf(stderr, "settingsctl: watching %s\n", escaped(connection.socketPath()).c_str());
    }
}

/// Standard output had an end of its own.
[[noreturn]] void failWithoutReader() {
    pollfd output{STDOUT_FILENO, 0, 0};
    ::poll(&output, 1, 0);
    throw unwritableOutput((output.revents & POLLNVAL) != 0 ? EBADF : EPIPE);
}

}  // namespace

ExitStatus watch(const Context& context) {
    const Interruption interruption;
    Connection connection(context.settingsSockets, context.timeout);
    // The answer to a question tells that the host serves this connection, so that no later change is missed.
    const std::string question = "watch";
    connection.send(bareRequest(IS_SELECTED, question));
    Connection::Deadline deadline = connection.deadline();
    std::vector<pollfd> ends{{interruption.descriptor(), POLLIN, 0}};
    if (!context.style.quiet) {
        ends.push_back({STDOUT_FILENO, 0, 0});
    }
    while (const auto line = connection.receive(deadline, ends)) {
        const Frame frame(*line);
        frame.throwIfRefusal();
        if (frame.isReplyTo(question)) {
            deadline.reset();
            tellReady(context, connection);
        } else {
            printFrame(context, frame);
        }
    }
    if (!interruption.happened()) {
        failWithoutReader();
    }
    return DONE;
}

}  // namespace SettingsCtl
