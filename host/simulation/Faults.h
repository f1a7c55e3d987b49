#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace SettingsHost {

/// The faults that can be simulated, see docs/laboratory.md.
enum class Fault {
    STORAGE_FULL,
    STORAGE_SLOW,
    STORAGE_FAILING,
    SDK_REFUSES,
    SDK_SLOW,
    SDK_CHANGES,
    REPLIES_LATE,
    EVENTS_DROPPED,
    CLOCK_JUMP,
    RESTART,
};

/// The kind of a fault's value.
enum class FaultKind { SWITCH, MILLISECONDS, SETTING, ACTION };

/// As it stands on the wire: "switch", "milliseconds", "setting" or "action".
const char* kindName(FaultKind kind);

struct FaultDescription {
    Fault fault;
    const char* name;
    FaultKind kind;
    /// It happens once, at once, and is never on.
    bool once;
    /// Of milliseconds.
    std::int64_t minimum;
    std::int64_t maximum;
    std::int64_t defaultTime;
    /// The keys that a value of the kind SETTING may be; the first is the default.
    std::vector<std::string> settings;
    const char* description;
};

/// Returns: all faults, in the order of the enumeration.
const std::vector<FaultDescription>& allFaults();
/// Returns: null when no fault has that name.
const FaultDescription* findFault(std::string_view name);
const FaultDescription& describe(Fault fault);

/// A number of milliseconds, a key, or neither.
using FaultValue = std::variant<std::monostate, std::int64_t, std::string>;

/// The faults that are on. It causes none itself: disk, voice SDK, connections and clock of the host ask it. They are
/// all off when it is made. One thread only.
class Faults {
public:
    bool isOn(Fault fault) const { return values.count(fault) > 0; }
    /// Returns: 0 when it is off.
    std::chrono::milliseconds timeOf(Fault fault) const;
    /// Is it on for the setting `key`?
    bool concerns(Fault fault, const std::string& key) const;
    /// The faults that are on, with their values.
    const std::map<Fault, FaultValue>& on() const { return values; }
    /// Their names.
    std::vector<std::string> namesOn() const;

    /// Returns: why `fault` cannot have `value`, as a message for a person; empty when it can. Neither
    /// a number nor a key is no value.
    static std::string problemWith(const FaultDescription& fault, const FaultValue& value);
    /// FAILED: a fault that happens once did not happen.
    enum class Result { CHANGED, UNCHANGED, FAILED };
    /// Switches a fault on, or makes one happen that happens once. Without a value it has its default.
    Result switchOn(Fault fault, const FaultValue& value = {});
    Result switchOff(Fault fault);

    /// Makes `fault` happen, given its value. Returns: false when it could not.
    using Action = std::function<bool(const std::string& value)>;
    /// How a fault that happens once does.
    void define(Fault fault, Action action) { actions[fault] = std::move(action); }
    /// Calls `action` when `fault` was switched on or off, or has another value.
    void onChange(Fault fault, std::function<void()> action) { observers.emplace(fault, std::move(action)); }

private:
    void changed(Fault fault);

    std::map<Fault, FaultValue> values;
    std::map<Fault, Action> actions;
    std::multimap<Fault, std::function<void()>> observers;
};

}  // namespace SettingsHost
