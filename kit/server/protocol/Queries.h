#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "SettingsHandlerKit/Client.h"
#include "Utils/Rapidjson.h"
#include "server/protocol/Administration.h"
#include "server/protocol/Clients.h"
#include "server/protocol/History.h"

namespace SettingsHandlerKit {

class CheckedSettingsHandler;

/// The frames without "type" that ask the server itself: hello, history, catalogue, page, backup and status. One thread
/// only.
class Queries {
public:
    /// Both outlive it. `nameOfRun` is one that no other run has.
    Queries(Clients& itsClients, const History& itsHistory, std::string nameOfRun);

    /// Whose time stamps the status tells.
    void watch(std::weak_ptr<const CheckedSettingsHandler> handler) { checkedHandler = std::move(handler); }
    /// Page, backup and status are answered by `itsAdministration`, at the Unix socket; before that by nobody.
    void administer(Administration& itsAdministration) { administration = &itsAdministration; }

    /// `frame` is an object without "type" and "batch".
    bool handles(const rapidjson::Document& frame) const;
    /// Replies to `client` or refuses the frame, which it handles.
    void handle(const std::shared_ptr<Client>& client, const rapidjson::Document& frame);

private:
    struct Query;
    struct Kind;

    static const std::vector<Kind>& kinds();

    void hello(const Query& query);
    void findEvents(const Query& query);
    void catalogue(const Query& query);
    void page(const Query& query);
    void backup(const Query& query);
    void status(const Query& query);

    void checkRoomFor(const std::vector<SharedFrame>& frames, std::size_t overheadOfEach) const;
    void reply(const Query& query, std::string frame);

    Clients& clients;
    const History& history;
    std::string run;
    std::weak_ptr<const CheckedSettingsHandler> checkedHandler;
    Administration* administration = nullptr;
};

}  // namespace SettingsHandlerKit
