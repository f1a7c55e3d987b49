#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "SDKWrapper/StorageManagerInterface.h"
#include "handler/StorageBounds.h"
#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

/// The storage as the handler sees it, with bounded memory. The handler gathers all values of a GetSettings before it
/// replies, and its cache keeps every value of an unknown key that it has read. Databases of older versions may hold
/// sixty times as much as may be stored now, so this bounds both. Small values are not counted. One thread only; the
/// storage outlives it.
class BoundedStorage : public SDKWrapper::StorageManagerInterface {
public:
    static constexpr std::size_t maximumReply = StorageBounds::maximumReply;
    static constexpr std::size_t maximumKept = StorageBounds::maximumKept;

    /// `context` holds the request that is being handled. `hasRoomFor`: does the host have as many bytes to spare?
    BoundedStorage(SDKWrapper::StorageManagerInterface& storage, std::shared_ptr<const RequestContext> context,
                   std::function<bool(std::size_t)> hasRoomFor);

    /// Errors: `ReadLimitExceeded`, while a GetSettings is handled.
    void getValue(const std::string& key, std::string& value) override;
    bool setValue(const std::string& key, const std::string& value) override;
    bool removeValue(const std::string& key) override;
    bool clearStorage() override;

    /// To be called after each request. Returns: true when the handler's cache keeps more than `maximumKept`, so that
    /// it is to be rebuilt now.
    bool requestEnded();

private:
    SDKWrapper::StorageManagerInterface& storage;
    std::shared_ptr<const RequestContext> context;
    StorageBounds bounds;
};

}  // namespace SettingsHandlerKit
