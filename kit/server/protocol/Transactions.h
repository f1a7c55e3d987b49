#pragma once

#include <set>
#include <string>

namespace SettingsHandlerKit {

/// What a batch needs of the storage: all its changes reach the disk with one flush, or none does. No operation throws.
/// One thread only.
class Transactions {
public:
    Transactions() = default;
    Transactions(const Transactions&) = delete;
    Transactions& operator=(const Transactions&) = delete;
    virtual ~Transactions() = default;

    /// Before the first request of a batch.
    virtual void begin() = 0;
    /// After the last one. Returns: false when nothing of it is stored; everything is rolled back then.
    virtual bool commit() = 0;
    /// After a failed commit: the owners' state and the handler are as after a restart; observers of the handler are
    /// told the real values of `changed`, the keys of the events.
    virtual void restore(const std::set<std::string>& changed) = 0;
};

}  // namespace SettingsHandlerKit
