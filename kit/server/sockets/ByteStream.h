#pragma once

#include <cstddef>
#include <string>

namespace SettingsHandlerKit {

/// The bytes of one connection, in both directions. One thread only.
class ByteStream {
public:
    /// Whoever uses the stream. Called from the event loop, never from inside a call of the stream except `readNow`.
    class User {
    public:
        /// How many bytes it takes at a time; more than 0 while the stream is read.
        virtual std::size_t room() const = 0;
        virtual void received(const char* bytes, std::size_t size) = 0;
        /// The other side sends no more, or the connection is lost.
        virtual void inputEnded() = 0;
        /// What `write` could not send at once is sent, or, unless `isSent`, lost.
        virtual void written(bool isSent) = 0;
        /// The stream is closed. Nothing is called after this.
        virtual void closed() = 0;

    protected:
        ~User() = default;
    };

    ByteStream() = default;
    ByteStream(const ByteStream&) = delete;
    ByteStream& operator=(const ByteStream&) = delete;
    virtual ~ByteStream() = default;

    /// From now on notifies `user`, which it does not own; nobody when it is null.
    virtual void setUser(User* user) = 0;
    virtual bool isOpen() const = 0;

    /// A new stream is not read. One whose input ended is not read any more.
    virtual void startReading() = 0;
    virtual void stopReading() = 0;
    /// Reads once if something came in, and tells the user of it at once. Returns: whether something came in.
    virtual bool readNow() = 0;

    /// Sends what the system takes at once, and keeps the rest until it can be sent.
    virtual void write(const std::string& bytes) = 0;
    /// Is something of the last `write` left? Then nothing more is to be written yet.
    virtual bool isWriting() const = 0;
    /// Ends the output; the other side still sends.
    virtual void endOutput() = 0;

    /// Closes at once; repeated calls do nothing.
    virtual void close() = 0;
};

}  // namespace SettingsHandlerKit
