#include "service/PassedSockets.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include <systemd/sd-daemon.h>

#include "transport/DoorError.h"

namespace SettingsHost {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

}  // namespace

PassedSockets::PassedSockets(const std::set<std::string>& expected) {
    char** list = nullptr;
    const int count = ::sd_listen_fds_with_names(1, &list);
    if (count < 0) {
        throw DoorError(std::string("cannot take the passed sockets over: ") + std::strerror(-count));
    }
    const std::unique_ptr<char*, Free> listOwner(list);
    for (int index = 0; index < count; ++index) {
        const std::unique_ptr<char, Free> name(list[index]);
        Descriptor socket(SD_LISTEN_FDS_START + index);
        if (expected.count(name.get()) == 0) {
            throw DoorError("a socket named '" + std::string(name.get()) + "' was passed, but there is no such door");
        }
        if (!sockets.emplace(name.get(), std::move(socket)).second) {
            throw DoorError("two sockets named '" + std::string(name.get()) + "' were passed");
        }
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

}  // namespace SettingsHost
