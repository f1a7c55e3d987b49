#include "server/StoredTransactions.h"

#include <exception>
#include <utility>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

namespace {

void orLog(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR,
                 std::string("cannot read all settings again after a batch was rolled back: ") + error.what());
    }
}

}  // namespace

class StoredTransactions::Retry : public StorageObserver {
public:
    explicit Retry(std::weak_ptr<StoredTransactions> waiting) : transactions(std::move(waiting)) {}

    void storageOperation(StorageOperation /*operation*/, bool succeeded,
                          std::chrono::nanoseconds /*duration*/) override {
        const auto waiting = succeeded ? transactions.lock() : nullptr;
        if (waiting) {
            waiting->storageWorks();
        }
    }

private:
    std::weak_ptr<StoredTransactions> transactions;
};

StoredTransactions::StoredTransactions(MessageHub& theHub, Later runLater) : hub(theHub), later(std::move(runLater)) {}

void StoredTransactions::watch(Storage& theStorage) {
    storage = &theStorage;
    storage->observe(std::make_shared<Retry>(weak_from_this()));
}

void StoredTransactions::restore(const std::set<std::string>& changed) {
    changedKeys.insert(changed.begin(), changed.end());
    waitsForStorage = !storage->isReadable();
    if (waitsForStorage) {
        writeLog(VessaLogger::ERROR,
                 "cannot read the storage: until it can be read, some settings keep values of a rolled-back batch");
        return;
    }
    startOver();
}

void StoredTransactions::startOver() {
    const std::set<std::string> keys = std::exchange(changedKeys, {});
    for (const auto& action : actions) {
        orLog(action);
    }
    if (const auto handler = watchedHandler.lock()) {
        orLog([&] { handler->startOver(keys); });
    }
}

void StoredTransactions::storageWorks() {
    if (waitsForStorage && !std::exchange(retryRequested, true)) {
        later([waiting = weak_from_this()] {
            if (const auto transactions = waiting.lock()) {
                transactions->retry();
            }
        });
    }
}

void StoredTransactions::retry() {
    retryRequested = false;
    if (!waitsForStorage || !storage->isReadable()) {
        return;
    }
    waitsForStorage = false;
    hub.perform(Origin::DEVICE, [this] {
        for (const auto& settingDBId : changedKeys) {
            hub.valueChanged(settingDBId);
        }
        startOver();
    });
}

}  // namespace SettingsHandlerKit
