#include "wire/Mutations.h"

#include "wire/Json.h"

// After the header that names the library's copy.
#include <rapidjson/pointer.h>

namespace WireTests {

namespace {

/// Values of all types.
const std::vector<std::string>& unauthenticated() {
    static const std::vector<std::string> values{"null", "[{}]", R"({"a":0})", "-0.5", R"("\u0001")", "false"};
    return values;
}

bool isSameType(const json::Value& one, const json::Value& other) {
    return one.GetType() == other.GetType() || (one.IsBool() && other.IsBool());
}

/// Of the object at `place` of `frame` and all within.
void addMutations(const json::Document& frame, const std::string& place, std::vector<Mutation>& found) {
    json::Document changed;
    const auto add = [&](const std::string& fault) { found.push_back({compact(changed), fault}); };
    changed.CopyFrom(frame, changed.GetAllocator());
    json::Pointer(place + "/unknown").Set(changed, 1);
    add(place + "/unknown was added");
    for (const auto& member : json::Pointer(place).Get(frame)->GetObject()) {
        const std::string here = place + "/" + member.name.GetString();
        const json::Pointer pointer(here);
        changed.CopyFrom(frame, changed.GetAllocator());
        pointer.Erase(changed);
        add(here + " was removed");
        for (const auto& text : unauthenticated()) {
            const json::Document unauthenticated = parsed(text);
            if (!isSameType(unauthenticated, member.value)) {
                changed.CopyFrom(frame, changed.GetAllocator());
                pointer.Set(changed, unauthenticated);
                add(here + " became " + text);
            }
        }
        if (member.value.IsObject()) {
            addMutations(frame, here, found);
        }
    }
}

}  // namespace

std::vector<Mutation> mutationsOf(const std::string& frame) {
    std::vector<Mutation> mutations;
    addMutations(parsed(frame), "", mutations);
    return mutations;
}

}  // namespace WireTests
