#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "Wire/FrameInspector.h"

namespace SettingsCtl {

/// What a frame is and what it should be.
struct FrameDifference {
    /// The first member that differs, such as "/payload/value".
    std::string path;
    /// The expected frame, with the ids and times of this run.
    std::string expected;
};

/// Compares frames of a replay with those of the scenario. What depends on the run is compared by its kind: ids of
/// events and of runs, which stay different ones, sequence numbers, which keep their distances, times, addresses,
/// files, versions of the program.
class Comparison {
public:
    /// Nothing when they are the same.
    std::optional<FrameDifference> difference(const std::string& expected, const std::string& got);
    /// A frame of the scenario with the ids of this run, where it resumes.
    std::string forThisRun(const std::string& frame) const;
    void hostStarted();

private:
    using Value = rapidjson::Value;
    using Allocator = rapidjson::Document::AllocatorType;

    void adapt(rapidjson::Document& expected, const rapidjson::Document& got);
    void adaptEvent(Value& expected, const Value& got, Allocator& allocator);
    void adaptHello(Value& expected, const Value& got, Allocator& allocator);
    void adaptTrace(Value& expected, const Value& got, Allocator& allocator);
    void adaptId(Value& expected, const Value& got, Allocator& allocator);
    void adaptSequence(Value& expected, const Value& got);

    /// Ids of the scenario and of this run.
    std::map<std::string, std::string> ids;
    std::set<std::string> taken;
    /// By run, as the scenario calls it: by how much sequence numbers are greater than those of the scenario. The
    /// empty name: no frame has told it yet.
    std::map<std::string, std::int64_t> shifts;
    std::string run;
};

}  // namespace SettingsCtl
