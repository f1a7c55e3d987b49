#pragma once

#include <functional>
#include <string>
#include <utility>

#include "Utils/Rapidjson.h"

namespace CommunicationHandler {

/// The message transport between clients, such as settings pages, and the handler.
///
/// The library registers its request handlers once, in the constructor of the handler. It sends replies and events on
/// the thread that delivered the request or made the change, without holding a lock. It reads the names of the
/// envelope's members for each request.
///
/// The implementer delivers requests one at a time, stops delivering before the handler is destroyed, and chooses the
/// framing of replies and events.
///
/// The order of the operations is part of the binary interface.
class [[gnu::visibility("default")]] CommunicationHandlerInterface {
public:
    CommunicationHandlerInterface(const CommunicationHandlerInterface&) = delete;
    CommunicationHandlerInterface& operator=(const CommunicationHandlerInterface&) = delete;

    /// Name of the envelope's member with the message id, a string.
    const std::string messageIdKey;
    /// Name of the envelope's member with the time stamp, a signed 64-bit integer.
    const std::string timestampKey;
    /// Name of the envelope's member with the payload, an object.
    const std::string payloadKey;

protected:
    /// Sets the names of the envelope's members. They do not change later.
    explicit CommunicationHandlerInterface(std::string messageIdKeyName = "messageId",
                                           std::string timestampKeyName = "timestamp",
                                           std::string payloadKeyName = "payload")
        : messageIdKey(std::move(messageIdKeyName)),
          timestampKey(std::move(timestampKeyName)),
          payloadKey(std::move(payloadKeyName)) {}

    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}
    virtual void reserved4() {}

public:
    /// Sends an event of `messageType` to every client.
    /// - `payload`: an object that owns its memory and is valid during the call only; the implementer may change it or
    ///   move it away.
    /// - Returns: a message id that the transport chooses; the library ignores it.
    /// - Threads: any.
    virtual std::string sendMessage(int messageType, rapidjson::Document& payload) = 0;

    /// Sends the reply to the request with the id `messageId`, to the client that sent the request.
    /// - `payload`: an object with the members of the reply, otherwise as for `sendMessage`.
    /// - Threads: the thread that delivered the request.
    virtual void sendResponse(const std::string& messageId, rapidjson::Document& payload) = 0;

    /// Registers `handler` for the requests of `messageType` that arrive from now on. It is called with the whole JSON
    /// text of each. The implementer keeps a copy of `handler` and does not call it during this call.
    virtual void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) = 0;

    virtual ~CommunicationHandlerInterface() = default;
};

}  // namespace CommunicationHandler
