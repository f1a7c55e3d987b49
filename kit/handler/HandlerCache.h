#pragma once

#include <memory>
#include <utility>

#include "SettingsHandler/SettingsHandlerInterface.h"
#include "handler/BoundedStorage.h"

namespace SettingsHandlerKit {

/// Bounds the handler's cache: when it keeps more than `BoundedStorage::maximumKept` after a request, it is to be
/// rebuilt. One thread only; the storage outlives it.
class HandlerCache {
public:
    HandlerCache(BoundedStorage& boundedStorage, std::shared_ptr<SettingsHandler::SettingsHandlerInterface> itsHandler)
        : storage(boundedStorage), handler(std::move(itsHandler)) {}

    /// To be called after each request. Returns: true when `rebuild` is to be called now.
    bool requestEnded() { return storage.requestEnded(); }

    /// As after a restart: the cache begins with the settings of the catalogue. May change values of the voice SDK.
    void rebuild() { handler->initializeSettings(); }

private:
    BoundedStorage& storage;
    std::shared_ptr<SettingsHandler::SettingsHandlerInterface> handler;
};

}  // namespace SettingsHandlerKit
