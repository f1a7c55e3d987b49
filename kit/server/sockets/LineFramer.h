#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>

namespace SettingsHost {

/// Cuts a stream of bytes into frames, one a line. Blank lines are no frames, nor is a last line without its end. A
/// frame over the limit is reported once, as soon as it is known; the rest of its line is skipped.
class LineFramer {
public:
    struct Frame {
        bool tooLarge = false;
        std::string text;
    };

    explicit LineFramer(std::size_t frameLimit) : limit(frameLimit) {}

    void append(const char* bytes, std::size_t size);
    /// How many bytes may be appended so that no more is kept than a frame over the limit.
    std::size_t room() const { return limit + 1 - std::min(size(), limit); }
    /// The memory that is kept for bytes that wait.
    std::size_t memory() const { return size() == 0 ? 0 : buffer.capacity(); }
    /// How many bytes wait to be cut.
    std::size_t size() const { return buffer.size() - start; }
    /// The next frame; nothing until more bytes arrive.
    std::optional<Frame> next();

private:
    bool skipToLineEnd();
    void compact();

    std::size_t limit;
    std::string buffer;
    /// Where the current line starts, and how far it was searched for its end.
    std::size_t start = 0;
    std::size_t searched = 0;
    bool skipping = false;
};

}  // namespace SettingsHost
