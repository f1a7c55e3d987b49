#pragma once

#include <functional>
#include <string>
#include <utility>

#include "Utils/Rapidjson.h"

namespace CommunicationHandler {

/// The message transport between the settings pages and the handler.
///
/// What the library does: registers its request handlers once, in its constructor; reads the envelope key names
/// each time it looks a member up; sends replies and events on the thread that delivered the request or made the
/// change, never holding a lock of its own.
///
/// What the implementer does: delivers requests one at a time, stops delivering before the handler is destroyed,
/// and frames replies and events in its own way. Operations are called through their places in the virtual table,
/// so their order here is binary interface.
class [[gnu::visibility("default")]] CommunicationHandlerInterface {
public:
    CommunicationHandlerInterface(const CommunicationHandlerInterface&) = delete;
    CommunicationHandlerInterface& operator=(const CommunicationHandlerInterface&) = delete;

    /// Envelope key of the message id, a string.
    const std::string messageIdKey;
    /// Envelope key of the time stamp, a signed 64-bit integer.
    const std::string timestampKey;
    /// Envelope key of the payload, an object.
    const std::string payloadKey;

protected:
    /// Fixes the names of the envelope's members for the life of the transport.
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
    /// Sends an unsolicited message of `messageType` to every client.
    /// `payload`: an object document that owns its memory, valid during the call only; the implementer may change it or
    /// move it away.
    /// Returns: a message id of the transport's choosing; the library ignores it.
    virtual std::string sendMessage(int messageType, rapidjson::Document& payload) = 0;

    /// Sends the answer to the request that carried `messageId`.
    /// `payload`: an object document with the answer's members only, otherwise like that of `sendMessage`.
    virtual void sendResponse(const std::string& messageId, rapidjson::Document& payload) = 0;

    /// Has `handler` called with the whole JSON text of every message of `messageType` that arrives from now on.
    /// The implementer keeps its own copy of `handler`.
    virtual void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) = 0;

    virtual ~CommunicationHandlerInterface() = default;
};

}  // namespace CommunicationHandler
