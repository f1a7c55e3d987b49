#include "service/logging/Journal.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "Wire/ControlCharacters.h"

namespace SettingsHandlerKit {

namespace {

const char* priorityOf(VessaLogger::LogLevel level) {
    switch (level) {
        case VessaLogger::TRACE:
            return "7";
        case VessaLogger::INFORMATION:
            return "6";
        case VessaLogger::WARNING:
            return "4";
        default:
            return "3";
    }
}

/// A value with line ends is preceded by its size, 64 bits in little-endian order.
void addField(std::string& entry, const std::string& name, const std::string& value) {
    entry += name;
    if (value.find('\n') == std::string::npos) {
        entry += "=" + value + "\n";
        return;
    }
    entry += '\n';
    for (unsigned shift = 0; shift < 64; shift += 8) {
        entry += static_cast<char>((static_cast<std::uint64_t>(value.size()) >> shift) & 0xffU);
    }
    entry += value + "\n";
}

}  // namespace

bool isStandardErrorTheJournal() {
    const char* const journal = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    return journal != nullptr && ::fstat(STDERR_FILENO, &status) == 0 &&
           std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) == journal;
}

std::string journalEntry(const LogLine& line, const std::optional<CurrentRequest>& request) {
    std::string entry;
    addField(entry, "MESSAGE", Wire::escapeControlCharacters(line.text));
    addField(entry, "PRIORITY", priorityOf(line.level));
    addField(entry, "SYSLOG_IDENTIFIER", programName());
    if (request) {
        addField(entry, "REQUEST_TYPE", std::to_string(request->type));
    }
    if (request && !request->setting.empty()) {
        addField(entry, "SETTING_KEY", request->setting);
    }
    return entry;
}

Journal::Journal(std::string socketPath)
    : path(std::move(socketPath)), descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    // Large enough for an entry with the longest frame.
    const int bufferSize = 1024 * 1024;
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &bufferSize, sizeof(bufferSize));
}

Journal::~Journal() {
    ::close(descriptor);
}

bool Journal::send(const std::string& entry) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof(address.sun_path) - 1));
    return ::sendto(descriptor, entry.data(), entry.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                    reinterpret_cast<const sockaddr*>(&address), sizeof(address)) >= 0;
}

}  // namespace SettingsHandlerKit
