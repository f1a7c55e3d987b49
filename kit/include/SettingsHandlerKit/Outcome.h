#pragma once

#include <string>

namespace SettingsHandlerKit {

/// The outcome of a request, a log-out or a `setSetting`. The library itself gives no reasons: it logs them.
struct Outcome {
    /// What happened.
    enum class Kind {
        /// A reply was sent (GetSettings, IsOrliaSelectedVA), the settings application was launched, or the storage was
        /// cleared (log-out).
        DONE,
        /// The setting has a new value.
        CHANGED,
        /// The setting had this value already.
        UNCHANGED,
        /// Nothing was done, or the value reached no owner.
        REFUSED,
    };

    /// Why it was refused. When several reasons apply, it is the first in this order.
    enum class Reason {
        /// It was not refused; or by an operation that a derived class overrides; or by an exception where no reason
        /// below fits.
        NONE,
        /// The request is not JSON, or a member is missing or has the wrong type.
        INCOMPLETE,
        /// A request with a newer time stamp, see `newest`, was accepted before.
        STALE,
        /// Only its owner changes this setting, whatever the value.
        READ_ONLY,
        /// The value of a locale list is not a JSON array with at least one locale.
        WRONG_FORM,
        /// The owner did not take the value, or the storage could not be cleared: a limit, the disk, an exception.
        NOT_STORED,
        /// A GetSettings request asked for more than there is memory for.
        BUSY,
    };

    /// What happened.
    Kind kind = Kind::DONE;
    /// Why, when it is `REFUSED`.
    Reason reason = Reason::NONE;
    /// The setting, whenever it was given as a string; otherwise empty.
    std::string settingDBId;
    /// False: it was changed, although the voice SDK refused the value.
    bool applied = true;
    /// With `STALE`: the newest accepted time stamp. All unknown keys share one.
    long newest = 0;
    /// It was not passed to the handler, because it would have ended the process.
    bool rejected = false;
    /// For people, in English; empty unless it was refused.
    std::string message;
};

}  // namespace SettingsHandlerKit
