#include "SettingsHandlerKit/PassedSockets.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fcntl.h>

#include "SettingsHandlerKit/ListenerError.h"
#include "service/manager/ManagerVariables.h"

namespace SettingsHandlerKit {

namespace {

/// The first passed descriptor, after the standard streams.
constexpr int firstPlace = 3;

[[noreturn]] void fail(const std::string& why) {
    throw ListenerError("cannot take the passed sockets over: " + why);
}

int numberOfSockets() {
    if (!isMeantForThisProcess("LISTEN_PID")) {
        return 0;
    }
    const auto count = managerNumber("LISTEN_FDS");
    if (!count) {
        return 0;
    }
    // More than a process can have open on any system.
    constexpr std::uint64_t tooMany = 1U << 20U;
    if (*count == 0 || *count > tooMany) {
        fail("LISTEN_FDS is out of range");
    }
    return static_cast<int>(*count);
}

/// The names between the colons; each of them may be empty, the last one too.
std::vector<std::string> namesIn(const std::string& list) {
    std::vector<std::string> names(1);
    for (const char character : list) {
        if (character == ':') {
            names.emplace_back();
        } else {
            names.back() += character;
        }
    }
    return names;
}

/// One for each socket; sockets without names are all called "unknown".
std::vector<std::string> namesOfSockets(int count) {
    const auto list = managerVariable("LISTEN_FDNAMES");
    if (!list) {
        return std::vector<std::string>(static_cast<std::size_t>(count), "unknown");
    }
    std::vector<std::string> names = namesIn(*list);
    if (names.size() != static_cast<std::size_t>(count)) {
        fail("LISTEN_FDNAMES does not name each socket");
    }
    return names;
}

/// A descriptor that is not open would be given to the next file, which must not be taken for a socket.
void expectOpen(int count) {
    for (int place = firstPlace; place < firstPlace + count; ++place) {
        if (::fcntl(place, F_GETFD) < 0) {
            fail(std::strerror(errno));
        }
    }
}

std::vector<std::string> takeNames() {
    try {
        const int count = numberOfSockets();
        if (count == 0) {
            return {};
        }
        std::vector<std::string> names = namesOfSockets(count);
        expectOpen(count);
        return names;
    } catch (const std::invalid_argument& error) {
        fail(error.what());
    }
}

}  // namespace

PassedSockets::PassedSockets(const std::set<std::string>& expected) {
    const std::vector<std::string> names = takeNames();
    for (const auto* variable : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"}) {
        ::unsetenv(variable);
    }
    int place = firstPlace;
    for (const auto& name : names) {
        Descriptor socket(place++);
        if (expected.count(name) == 0) {
            throw ListenerError("a socket named '" + name + "' was passed, but there is no such listener");
        }
        if (!sockets.emplace(name, std::move(socket)).second) {
            throw ListenerError("two sockets named '" + name + "' were passed");
        }
    }
}

void PassedSockets::add(const std::string& name, Descriptor socket, bool isOwn) {
    sockets[name] = std::move(socket);
    if (isOwn) {
        own.insert(name);
    }
}

std::optional<Descriptor> PassedSockets::take(const std::string& name) {
    const auto entry = sockets.find(name);
    if (entry == sockets.end()) {
        return std::nullopt;
    }
    std::optional<Descriptor> taken(std::move(entry->second));
    sockets.erase(entry);
    return taken;
}

}  // namespace SettingsHandlerKit
