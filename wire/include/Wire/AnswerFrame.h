#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Wire {

/// The outcome of a request.
namespace AnswerOutcome {

constexpr std::string_view changed = "changed";
constexpr std::string_view unchanged = "unchanged";
constexpr std::string_view refused = "refused";
constexpr std::string_view done = "done";

}  // namespace AnswerOutcome

/// Why a request was refused by the handler.
namespace AnswerReason {

constexpr std::string_view incomplete = "incomplete";
constexpr std::string_view stale = "stale";
constexpr std::string_view readOnly = "read-only";
constexpr std::string_view wrongForm = "wrong-form";
constexpr std::string_view notStored = "not-stored";

}  // namespace AnswerReason

/// The answer to a request that asked for one. Its texts outlive it.
struct Answer {
    int type = 0;
    std::string_view messageId;
    std::string_view outcome;
    /// Empty unless it was refused.
    std::string_view reason;
    /// For people; empty unless it was refused.
    std::string_view message;
    std::optional<std::string_view> settingDBId;
    std::optional<std::string_view> value;
    /// False: the voice SDK refused the value, and the event was sent all the same.
    bool applied = true;
    /// The newest accepted time stamp, of a request that is stale.
    std::optional<std::int64_t> newest;
};

/// `{"type":…,"messageId":…,"payload":{"outcome":…,"reason":…,"message":…,"settingDBId":…,"value":…,"applied":false,
/// "newest":…}}` without the members that do not apply.
std::string answerFrame(const Answer& answer);

}  // namespace Wire
