#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace SettingsHandlerKit {

/// How frames stand in the bytes of a connection.
class Framing {
public:
    struct Frame {
        bool tooLarge = false;
        std::string text;
    };

    Framing() = default;
    Framing(const Framing&) = default;
    Framing& operator=(const Framing&) = default;
    virtual ~Framing() = default;

    virtual void append(const char* bytes, std::size_t size) = 0;
    /// How many bytes may be appended.
    virtual std::size_t room() const = 0;
    /// How many bytes are not cut yet.
    virtual std::size_t size() const = 0;
    /// The memory of these, and of a frame that is not complete.
    virtual std::size_t memory() const = 0;
    /// The next frame; nothing until more bytes arrive.
    virtual std::optional<Frame> next() = 0;
    /// Has the protocol ended the conversation? Then there is no further frame, and none is to be sent.
    virtual bool hasEnded() const { return false; }
    /// Forgets all input.
    virtual void clear() = 0;

    /// Adds `size` bytes of `frame` from `from` on, as they are sent, to `output`. Frames are written in order.
    virtual void encode(const std::string& frame, std::size_t from, std::size_t size, std::string& output) = 0;
    /// Adds what the protocol itself has to send.
    virtual void encodeControl(std::string& /*output*/) {}
    /// How much memory that takes.
    virtual std::size_t controlMemory() const { return 0; }
    /// Adds what is sent last, once.
    virtual void encodeEnd(std::string& /*output*/) {}
};

}  // namespace SettingsHandlerKit
