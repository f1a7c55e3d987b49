#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Storage.h"
#include "server/protocol/MessageHub.h"
#include "server/protocol/Transactions.h"

namespace SettingsHandlerKit {

/// The batches of a service on its storage. After a failed one the service reads its own state again, then the handler
/// starts over. A storage that cannot be read is waited for: this is done after its first operation that succeeds, and
/// clients get a notice then. One thread only.
class StoredTransactions : public Transactions, public std::enable_shared_from_this<StoredTransactions> {
public:
    /// Runs an action soon.
    using Later = std::function<void(std::function<void()>)>;

    /// `hub` outlives it.
    StoredTransactions(MessageHub& hub, Later later);

    /// `storage`: not used any more when no batch comes.
    void watch(Storage& storage);
    void watch(std::weak_ptr<CheckedSettingsHandler> handler) { watchedHandler = std::move(handler); }
    /// An exception of `action` is logged at level 3.
    void onRollBack(std::function<void()> action) { actions.push_back(std::move(action)); }

    void begin() override { storage->beginTransaction(); }
    bool commit() override { return storage->commitTransaction(); }
    void restore(const std::set<std::string>& changed) override;

private:
    class Retry;

    void startOver();
    void storageWorks();
    void retry();

    MessageHub& hub;
    Later later;
    Storage* storage = nullptr;
    std::weak_ptr<CheckedSettingsHandler> watchedHandler;
    std::vector<std::function<void()>> actions;
    /// The observers of these have not been told of their real values yet.
    std::set<std::string> changedKeys;
    bool waitsForStorage = false;
    bool retryRequested = false;
};

}  // namespace SettingsHandlerKit
