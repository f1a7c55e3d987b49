#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <unordered_map>

namespace SettingsHandlerKit {

/// A GetSettings request asks for more than there is memory for. Thrown through the handler, which has changed nothing.
class ReadLimitExceeded : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Counts the stored values that the handler holds in memory: it gathers all values of a GetSettings before it replies,
/// and its cache keeps every value of an unknown key that it has read. A storage may hold far more than there is memory
/// for, so both are limited. Small values are not counted. Threads: any; requests come one at a time.
class StorageBounds {
public:
    /// Values for one reply: twice as much as may be stored.
    static constexpr std::size_t maximumReply = 2UL * 1024UL * 1024UL;
    /// Values in the handler's cache: as much as may be stored.
    static constexpr std::size_t maximumKept = 1024UL * 1024UL;

    /// Values to this size are not counted: a thousand of them, as many as may be stored, are few bytes.
    static constexpr std::size_t smallValue = 64;

    /// `hasRoomFor`: are there so many bytes to spare? Without one there are.
    explicit StorageBounds(std::function<bool(std::size_t)> hasRoomFor);

    /// `gathering`: for the reply to a GetSettings request. Errors: `ReadLimitExceeded`, while gathering.
    void wasRead(const std::string& key, std::size_t size, bool gathering);
    void wasWritten(const std::string& key, std::size_t size);
    /// The handler rebuilds its cache.
    void wasCleared();

    /// To be called after each request. Returns: true when the handler's cache keeps more than `maximumKept`, so that
    /// it is to be rebuilt now.
    bool requestEnded();

private:
    struct Kept {
        std::size_t size = 0;
        /// The last request that gathered it.
        unsigned long request = 0;
    };

    Kept& keep(const std::string& key, std::size_t size);
    void forget(const std::string& key);
    void forgetAll();
    std::size_t gather(const std::string& key, std::size_t size, bool gathering);

    std::function<bool(std::size_t)> hasRoomFor;
    std::mutex mutex;
    /// The values that the handler's cache keeps, without small ones.
    std::unordered_map<std::string, Kept> kept;
    /// False: nothing is kept or gathered. Read without the mutex, so that small values cost nothing.
    std::atomic<bool> countsAny{false};
    std::size_t keptBytes = 0;
    std::size_t gatheredBytes = 0;
    unsigned long request = 1;
};

}  // namespace SettingsHandlerKit
