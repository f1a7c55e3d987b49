#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>

namespace SettingsHandlerKit {

/// Cuts a stream of bytes into frames, one a line. Blank lines and a last line without its end are ignored. A frame
/// over the limit is reported once, as soon as the limit is exceeded; the rest of its line is skipped.
class LineFramer {
public:
    struct Frame {
        bool tooLarge = false;
        std::string text;
    };

    explicit LineFramer(std::size_t frameLimit) : limit(frameLimit) {}

    void append(const char* bytes, std::size_t size);
    /// How many bytes may be appended, so that at most one byte more than the limit is kept.
    std::size_t room() const { return limit + 1 - std::min(size(), limit); }
    /// The memory of the bytes that are not cut yet.
    std::size_t memory() const { return size() == 0 ? 0 : buffer.capacity(); }
    /// How many bytes are not cut yet.
    std::size_t size() const { return buffer.size() - start; }
    /// The next frame; nothing until more bytes arrive.
    std::optional<Frame> next();

private:
    bool skipToLineEnd();
    void compact();

    std::size_t limit;
    std::string buffer;
    /// Start of the current line, and how far it was searched for its end.
    std::size_t start = 0;
    std::size_t searched = 0;
    bool skipping = false;
};

}  // namespace SettingsHandlerKit
