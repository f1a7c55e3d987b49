#pragma once

#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Message.h"

namespace SettingsDbus {

/// A call that changes something and waits for its turn.
struct Call {
    /// The call itself.
    Message message;
    /// The method: "Set", "SetMany", "LogOut", "OpenSettings" or "Undo". The writing of a property is "Set", too.
    std::string method;
    /// Keys and values; Undo has a key alone.
    std::vector<std::pair<std::string, std::string>> assignments;
};

/// The caller's unique name.
std::string senderOf(const Call& call);

/// Calls in turn: those of one caller in their order, and after one of each caller one of the next. So a caller that
/// sends many delays itself.
class CallQueue {
public:
    /// How many calls of one caller wait at most.
    static constexpr std::size_t maximumPerCaller = 16;
    /// How many bytes all keys and values of calls have that wait.
    static constexpr std::size_t maximumSize = 16UL * 1024 * 1024;

    /// Errors: `CallError` when too much waits, or the call is larger than a frame of the wire.
    void add(Call call);
    bool empty() const { return waiting.empty(); }
    /// The next call. Call only unless it is empty.
    Call next();

private:
    /// By the caller's unique name.
    std::map<std::string, std::deque<Call>> waiting;
    std::string lastCaller;
    std::size_t size = 0;
};

}  // namespace SettingsDbus
