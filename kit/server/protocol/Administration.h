#pragma once

#include <optional>
#include <string>

#include "Wire/QueryFrames.h"

namespace SettingsHandlerKit {

/// What programs of the host's user may ask of the service at the Unix socket. One thread only.
class Administration {
public:
    Administration() = default;
    Administration(const Administration&) = delete;
    Administration& operator=(const Administration&) = delete;
    virtual ~Administration() = default;

    /// The address of the pages with their key; empty when there are none.
    virtual std::string pageAddress() const = 0;
    /// Replaces the key. Returns: the new address; nothing when the key could not be stored.
    /// Errors: exceptions that say why it was not replaced.
    virtual std::optional<std::string> renewPageKey() = 0;
    /// Backs the storage up. Returns: the file of the backup. Errors: `DatabaseError`.
    virtual std::string backUp() = 0;
    /// Everything but the newest time stamps.
    virtual Wire::StatusReply status() = 0;
};

}  // namespace SettingsHandlerKit
