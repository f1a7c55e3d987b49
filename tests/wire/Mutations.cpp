#include "wire/Mutations.h"

#include "wire/Json.h"

namespace WireTests {

namespace {

/// A value of each type.
const std::vector<std::string>& valuesOfAllTypes() {
    static const std::vector<std::string> values{"null", "[{}]", R"({"a":0})", "-0.5", R"("\u0001")", "false"};
    return values;
}

bool isSameType(const rapidjson::Value& one, const rapidjson::Value& other) {
    return one.GetType() == other.GetType() || (one.IsBool() && other.IsBool());
}

/// Adds the mutations of the object at `place` of `frame` and of all objects inside it.
void addMutations(const rapidjson::Document& frame, const std::string& place, std::vector<Mutation>& found) {
    rapidjson::Document changed;
    const auto add = [&](const std::string& fault) { found.push_back({compact(changed), fault}); };
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the document deletes its allocator
    changed.CopyFrom(frame, changed.GetAllocator());
    rapidjson::Pointer(place + "/unknown").Set(changed, 1);
    add(place + "/unknown was added");
    for (const auto& member : rapidjson::Pointer(place).Get(frame)->GetObject()) {
        const std::string here = place + "/" + member.name.GetString();
        const rapidjson::Pointer pointer(here);
        changed.CopyFrom(frame, changed.GetAllocator());
        pointer.Erase(changed);
        add(here + " was removed");
        for (const auto& text : valuesOfAllTypes()) {
            const rapidjson::Document other = parsed(text);
            if (!isSameType(other, member.value)) {
                changed.CopyFrom(frame, changed.GetAllocator());
                pointer.Set(changed, other);
                add(std::string(here).append(" became ").append(text));
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
