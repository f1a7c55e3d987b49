#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "server/sockets/Framing.h"

namespace SettingsHandlerKit {

/// Cuts a stream of bytes into frames, one a line. Blank lines and a last line without its end are ignored. A frame
/// over the limit is reported once, as soon as the limit is exceeded; the rest of its line is skipped.
class LineFramer : public Framing {
public:
    explicit LineFramer(std::size_t frameLimit) : limit(frameLimit) {}

    void append(const char* bytes, std::size_t size) override;
    /// So that at most one byte more than the limit is kept.
    std::size_t room() const override { return limit + 1 - std::min(size(), limit); }
    std::size_t memory() const override { return size() == 0 ? 0 : buffer.capacity(); }
    std::size_t size() const override { return buffer.size() - start; }
    std::optional<Frame> next() override;
    /// An assignment would keep the memory.
    void clear() override { std::exchange(*this, LineFramer(limit)); }
    void encode(const std::string& frame, std::size_t from, std::size_t size, std::string& output) override;

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
