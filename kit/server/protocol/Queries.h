#pragma once

#include <memory>

#include "SettingsHandlerKit/Client.h"
#include "Utils/Rapidjson.h"
#include "server/protocol/Clients.h"
#include "server/protocol/History.h"

namespace SettingsHandlerKit {

/// The frames without "type" that ask the server itself: hello, history, catalogue, page, backup and status. One thread
/// only.
class Queries {
public:
    /// Both outlive it.
    Queries(Clients& itsClients, History& itsHistory) : clients(itsClients), history(itsHistory) {}

    /// `frame` is an object without "type" and "batch".
    bool handles(const rapidjson::Document& frame) const;
    /// Replies to `client` or refuses the frame, which it handles.
    void handle(const std::shared_ptr<Client>& client, const rapidjson::Document& frame);

private:
    Clients& clients;
    History& history;
};

}  // namespace SettingsHandlerKit
