#include "service/PassedSockets.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

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
    std::vector<std::unique_ptr<char, Free>> names;
    const std::unique_ptr<char*, Free> listOwner(list);
    for (int index = 0; index < count; ++index) {
        names.emplace_back(list[index]);
    }
    int place = SD_LISTEN_FDS_START;
    for (const auto& taken : names) {
        const std::string name = taken.get();
        Descriptor socket(place++);
        if (expected.count(name) == 0) {
            throw DoorError("a socket named '" + name + "' was passed, but there is no such door");
        }
        if (!sockets.emplace(name, std::move(socket)).second) {
            throw DoorError("two sockets named '" + name + "' were passed");
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
