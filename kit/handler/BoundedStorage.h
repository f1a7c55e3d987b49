#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>

#include "SDKWrapper/StorageManagerInterface.h"
#include "service/logging/RequestContext.h"

namespace SettingsHandlerKit {

/// A GetSettings request asks for more than the host has memory for. Thrown through the handler, which has changed
/// nothing.
class ReadLimitExceeded : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The storage as the handler sees it, with bounded memory. The handler gathers all values of a GetSettings before it
/// replies, and its cache keeps every value of an unknown key that it has read. Databases of older versions may hold
/// sixty times as much as may be stored now, so this bounds both. Small values are not counted. One thread only; the
/// storage outlives it.
class BoundedStorage : public SDKWrapper::StorageManagerInterface {
public:
    /// Values for one reply: twice as much as may be stored.
    static constexpr std::size_t maximumReply = 2UL * 1024UL * 1024UL;
    /// Values in the handler's cache: as much as may be stored.
    static constexpr std::size_t maximumKept = 1024UL * 1024UL;

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
    struct Kept {
        std::size_t size = 0;
        /// The last request that read it.
        unsigned long request = 0;
    };

    Kept& keep(const std::string& key, std::size_t size);
    void forget(const std::string& key);
    bool isGathering() const;

    SDKWrapper::StorageManagerInterface& storage;
    std::shared_ptr<const RequestContext> context;
    std::function<bool(std::size_t)> hasRoomFor;
    /// The values that the handler's cache keeps, without small ones.
    std::unordered_map<std::string, Kept> kept;
    std::size_t keptBytes = 0;
    std::size_t gatheredBytes = 0;
    unsigned long request = 1;
};

}  // namespace SettingsHandlerKit
