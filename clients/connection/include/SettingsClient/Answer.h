#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace SettingsClient {

/// Why a change was refused. A newer host may have more reasons.
namespace Reason {

/// A member of the request is missing or has the wrong type.
constexpr const char* incomplete = "incomplete";
/// A request with a newer time stamp was accepted before, see `Answer::newest`.
constexpr const char* stale = "stale";
/// Only its owner changes this setting, whatever the value.
constexpr const char* readOnly = "read-only";
/// The value of a locale list is not a JSON array with at least one locale.
constexpr const char* wrongForm = "wrong-form";
/// The value was not stored, or the storage could not be cleared: a limit, the disk.
constexpr const char* notStored = "not-stored";

}  // namespace Reason

/// What came of a request that changes something.
enum class Outcome {
    /// The setting has a new value; an event was sent.
    CHANGED,
    /// The setting had this value already.
    UNCHANGED,
    /// The settings application was opened, or the storage was cleared.
    DONE,
    /// Nothing was changed; `Answer::reason` says why.
    REFUSED,
};

/// The host's answer to a request that changes something.
struct Answer {
    /// What came of it.
    Outcome outcome = Outcome::DONE;
    /// Why it was refused: one of `Reason`, or the code of a refusal of one request of several ("busy"). Empty unless
    /// it was refused, and from a host that gives no answers.
    std::string reason;
    /// For people, in English; empty where `reason` is.
    std::string message;
    /// The setting; empty for requests about none.
    std::string key;
    /// The value before, when it was changed.
    std::optional<std::string> from;
    /// The value that the host reports now, which may be another one than requested. Nothing when there is none.
    std::optional<std::string> value;
    /// False: it was changed, although the voice SDK refused the value.
    bool applied = true;
    /// With `Reason::stale`: the newest time stamp that the host has accepted.
    std::optional<std::int64_t> newest;

    /// Was the request carried out, or was there nothing to do?
    bool accepted() const { return outcome != Outcome::REFUSED; }
};

/// A new value for a setting.
struct Assignment {
    /// The key of the setting.
    std::string key;
    /// Its new value.
    std::string value;
    /// In milliseconds since the epoch. Nothing: the greater of now and the newest time stamp that this client knows,
    /// the same for all that are set together. To set a value in spite of `Reason::stale`, give a newer one than
    /// `Answer::newest`.
    std::optional<std::int64_t> timestamp = std::nullopt;
};

}  // namespace SettingsClient
