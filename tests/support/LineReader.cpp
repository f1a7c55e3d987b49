#include "support/LineReader.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <poll.h>
#include <unistd.h>

namespace TestSupport {

bool LineReader::fill(std::chrono::steady_clock::time_point until) {
    while (!ended) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        pollfd wanted{descriptor, POLLIN, 0};
        const int ready = ::poll(&wanted, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            return false;
        }
        std::array<char, 65536> buffer{};
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count > 0) {
            pending.append(buffer.data(), static_cast<std::size_t>(count));
            return true;
        }
        if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            ended = true;
        }
    }
    return false;
}

std::optional<std::string> LineReader::readLine(std::chrono::milliseconds deadline) {
    const auto until = std::chrono::steady_clock::now() + deadline;
    std::size_t searched = 0;
    for (;;) {
        const std::size_t end = pending.find('\n', searched);
        if (end != std::string::npos) {
            std::string line = pending.substr(0, end);
            pending.erase(0, end + 1);
            return line;
        }
        searched = pending.size();
        if (!fill(until)) {
            return std::nullopt;
        }
    }
}

std::string LineReader::readAll(std::chrono::milliseconds deadline) {
    const auto until = std::chrono::steady_clock::now() + deadline;
    while (fill(until)) {
    }
    std::string text;
    text.swap(pending);
    return text;
}

}  // namespace TestSupport
