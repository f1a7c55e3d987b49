#include <cerrno>
#include <string>
#include <vector>

#include <poll.h>
#include <unistd.h>

#include "Interruption.h"
#include "Verbs.h"

namespace SettingsCtl {

namespace {

void printChange(const Context& context, const SettingsClient::Event& event) {
    printLine(context.style,
              context.style.json ? event.frame : changeLine(context.style, event.key, event.from, event.to));
}

void printReread(const Context& context, const SettingsClient::Reread& reread) {
    if (context.style.bareValues) {
        return;
    }
    const std::string keys = reread.missed ? "all settings" : escaped(joined(reread.keys));
    printLine(context.style, context.style.json ? reread.frame : "reread: " + keys);
}

/// Reports why standard output cannot be written: it is closed, or a pipe without a reader.
[[noreturn]] void failForOutput(const pollfd& output) {
    throw unwritableOutput((output.revents & POLLNVAL) != 0 ? EBADF : EPIPE);
}

/// Prints until interrupted.
void serve(const Context& context, SettingsClient::Client& client) {
    const Interruption interruption;
    std::vector<pollfd> wanted{{client.fileDescriptor(), POLLIN, 0}, {interruption.descriptor(), POLLIN, 0}};
    if (!context.style.quiet) {
        wanted.push_back({STDOUT_FILENO, 0, 0});
    }
    for (;;) {
        ::poll(wanted.data(), wanted.size(), -1);
        if (wanted[1].revents != 0) {
            return;
        }
        if (!context.style.quiet && wanted[2].revents != 0) {
            failForOutput(wanted[2]);
        }
        client.process();
    }
}

}  // namespace

ExitStatus watch(const Context& context, bool reconnect) {
    auto client = context.client();
    client.onEvent([&](const auto& event) { printChange(context, event); });
    client.onReread([&](const auto& reread) { printReread(context, reread); });
    bool wasConnected = false;
    client.onConnected([&] {
        wasConnected = true;
        // Scripts wait for this line before they make the changes that they watch.
        printWarning(context.style, "watching " + client.socketPath());
    });
    client.onDisconnected([&](const std::string& reason) {
        if (!wasConnected || !reconnect) {
            throw Failure(UNREACHABLE, reason);
        }
        printWarning(context.style, reason + "; reconnecting");
    });
    serve(context, client);
    return DONE;
}

}  // namespace SettingsCtl
