#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SettingsHandlerKit/Client.h"
#include "Utils/Rapidjson.h"
#include "server/protocol/Announcements.h"
#include "server/protocol/Clients.h"
#include "server/protocol/Requests.h"
#include "server/protocol/Transactions.h"

namespace SettingsHandlerKit {

/// Handles batches: 1 to 64 requests of the types 7, 18 and 24 in one frame, one after the other with nobody in
/// between. Frames that tell of them leave when all changes are stored. One thread only.
class Batches {
public:
    /// All outlive it.
    Batches(Clients& allClients, Announcements& itsAnnouncements, Requests& itsRequests)
        : clients(allClients), announcements(itsAnnouncements), requests(itsRequests) {}

    /// Without any, the changes of a batch are stored one by one.
    void use(std::shared_ptr<Transactions> itsTransactions) { transactions = std::move(itsTransactions); }

    /// `batch` is the member of that name. What is no batch is refused, and nothing is done.
    void handle(const std::shared_ptr<Client>& client, const rapidjson::Value& batch);

private:
    using Elements = std::vector<std::pair<const rapidjson::Value&, std::string>>;

    bool isBatch(const rapidjson::Value& batch) const;
    void deliver(const std::shared_ptr<Client>& client, const Elements& elements, Requests::Delivery delivery);
    void undo(const std::shared_ptr<Client>& client, const Elements& elements);

    Clients& clients;
    Announcements& announcements;
    Requests& requests;
    std::shared_ptr<Transactions> transactions;
};

}  // namespace SettingsHandlerKit
