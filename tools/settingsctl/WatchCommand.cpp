#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

#include "Commands.h"
#include "Connection.h"
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

private:
    int number;
};

void print(const Context& context, const Frame& frame) {
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
        printLine(context.style, escapeControlCharacters(line));
    }
}

}  // namespace

ExitStatus watch(const Context& context) {
    const Interruption interruption;
    Connection connection(context.socketPath, context.timeout);
    while (const auto line = connection.receiveUntil(interruption.descriptor())) {
        print(context, Frame(*line));
    }
    return DONE;
}

}  // namespace SettingsCtl
