#include "server/sockets/LineFramer.h"

#include <utility>

namespace SettingsHandlerKit {

namespace {

bool isBlank(const std::string& line) {
    return line.find_first_not_of(" \t\r") == std::string::npos;
}

}  // namespace

void LineFramer::append(const char* bytes, std::size_t size) {
    if (start > 0) {
        compact();
    }
    buffer.append(bytes, size);
}

std::optional<LineFramer::Frame> LineFramer::next() {
    for (;;) {
        if (skipping && !skipToLineEnd()) {
            return std::nullopt;
        }
        const std::size_t end = buffer.find('\n', searched);
        if (end == std::string::npos) {
            searched = buffer.size();
            if (buffer.size() - start > limit) {
                skipping = true;
                return Frame{true, {}};
            }
            compact();
            return std::nullopt;
        }
        Frame frame{end - start > limit, {}};
        if (!frame.tooLarge) {
            frame.text = buffer.substr(start, end - start);
        }
        start = searched = end + 1;
        if (frame.tooLarge || !isBlank(frame.text)) {
            return frame;
        }
    }
}

/// Drops everything up to the end of the line. Returns: false when that has not arrived.
bool LineFramer::skipToLineEnd() {
    const std::size_t end = buffer.find('\n', searched);
    const bool found = end != std::string::npos;
    start = searched = found ? end + 1 : buffer.size();
    skipping = !found;
    if (!found) {
        compact();
    }
    return found;
}

void LineFramer::encode(const std::string& frame, std::size_t from, std::size_t size, std::string& output) {
    output.append(frame, from, size);
    if (from + size == frame.size()) {
        output += '\n';
    }
}

void LineFramer::compact() {
    constexpr std::size_t worthKeeping = 4096;
    buffer.erase(0, start);
    searched -= start;
    start = 0;
    if (buffer.empty() && buffer.capacity() > worthKeeping) {
        // An assignment would keep the memory.
        std::exchange(buffer, {});
    }
}

}  // namespace SettingsHandlerKit
