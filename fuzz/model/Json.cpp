#include "model/Json.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Utils/Rapidjson.h"
#include "model/Utf8.h"

namespace SettingsHandlerFuzz {

namespace {

using rapidjson::Value;

std::string_view viewOf(const Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

std::string textOf(const Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

std::string compactText(const Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

const Value* memberOf(const Value& object, const std::string& name) {
    if (object.IsObject()) {
        for (const auto& member : object.GetObject()) {
            if (viewOf(member.name) == name) {
                return &member.value;
            }
        }
    }
    return nullptr;
}

std::size_t nestingOf(const Value& value) {
    std::size_t inside = 0;
    if (value.IsObject()) {
        for (const auto& member : value.GetObject()) {
            inside = std::max(inside, nestingOf(member.value));
        }
    } else if (value.IsArray()) {
        for (const auto& element : value.GetArray()) {
            inside = std::max(inside, nestingOf(element));
        }
    } else {
        return 0;
    }
    return inside + 1;
}

bool isWellFormedValue(const Value& value) {
    if (value.IsString()) {
        return isUtf8(viewOf(value));
    }
    if (value.IsArray()) {
        return std::all_of(value.Begin(), value.End(), isWellFormedValue);
    }
    return !value.IsObject() || std::all_of(value.MemberBegin(), value.MemberEnd(), [](const auto& member) {
        return isWellFormedValue(member.name) && isWellFormedValue(member.value);
    });
}

}  // namespace

class Envelope::Tree {
public:
    explicit Tree(const std::string& json)
        : values(valueMemory.data(), valueMemory.size()),
          stack(stackMemory.data(), stackMemory.size()),
          root(&values, stackMemory.size() / 2, &stack),
          valid(!root.Parse(json.c_str()).HasParseError()) {}

    const Value* payload() const {
        const Value* const member = memberOf(root, "payload");
        return member != nullptr && member->IsObject() ? member : nullptr;
    }

    /// Enough for most texts, which are parsed without another allocation so.
    /// @{
    alignas(8) std::array<char, 2048> valueMemory;
    alignas(8) std::array<char, 1024> stackMemory;
    rapidjson::MemoryPoolAllocator<> values;
    rapidjson::MemoryPoolAllocator<> stack;
    /// @}
    rapidjson::GenericDocument<rapidjson::UTF8<>, rapidjson::MemoryPoolAllocator<>, rapidjson::MemoryPoolAllocator<>>
        root;
    bool valid;
};

Envelope::Envelope(const std::string& json) : tree(std::make_unique<Tree>(json)) {}
Envelope::~Envelope() = default;

bool Envelope::isJson() const {
    return tree->valid;
}

bool Envelope::isObject() const {
    return tree->valid && tree->root.IsObject();
}

bool Envelope::isArray() const {
    return tree->valid && tree->root.IsArray();
}

std::size_t Envelope::nesting() const {
    return nestingOf(tree->root);
}

bool Envelope::isWellFormed() const {
    return isWellFormedValue(tree->root);
}

bool Envelope::has(const std::string& name) const {
    return memberOf(tree->root, name) != nullptr;
}

std::optional<std::string> Envelope::text(const std::string& name) const {
    const Value* const member = memberOf(tree->root, name);
    return member != nullptr && member->IsString() ? std::optional(textOf(*member)) : std::nullopt;
}

std::optional<long> Envelope::integer(const std::string& name) const {
    const Value* const member = memberOf(tree->root, name);
    return member != nullptr && member->IsInt64() ? std::optional(long{member->GetInt64()}) : std::nullopt;
}

std::optional<unsigned long> Envelope::number(const std::string& name) const {
    const Value* const member = memberOf(tree->root, name);
    return member != nullptr && member->IsUint64() ? std::optional(static_cast<unsigned long>(member->GetUint64()))
                                                   : std::nullopt;
}

bool Envelope::hasObject(const std::string& name) const {
    const Value* const member = memberOf(tree->root, name);
    return member != nullptr && member->IsObject();
}

bool Envelope::isTrue(const std::string& name) const {
    const Value* const member = memberOf(tree->root, name);
    return member != nullptr && member->IsTrue();
}

bool Envelope::isBoolean(const std::string& name) const {
    const Value* const member = memberOf(tree->root, name);
    return member != nullptr && member->IsBool();
}

std::optional<std::string> Envelope::textIn(const std::string& object, const std::string& name) const {
    const Value* const outer = memberOf(tree->root, object);
    const Value* const member = outer != nullptr ? memberOf(*outer, name) : nullptr;
    return member != nullptr && member->IsString() ? std::optional(textOf(*member)) : std::nullopt;
}

std::string Envelope::compactIn(const std::string& object, const std::string& name) const {
    const Value* const outer = memberOf(tree->root, object);
    const Value* const member = outer != nullptr ? memberOf(*outer, name) : nullptr;
    return member == nullptr ? "" : compactText(*member);
}

bool Envelope::hasPayload() const {
    return tree->payload() != nullptr;
}

std::optional<std::string> Envelope::payloadText(const std::string& name) const {
    const Value* const member = hasPayload() ? memberOf(*tree->payload(), name) : nullptr;
    return member != nullptr && member->IsString() ? std::optional(textOf(*member)) : std::nullopt;
}

std::optional<std::vector<std::string>> Envelope::payloadTexts(const std::string& name) const {
    const Value* const member = hasPayload() ? memberOf(*tree->payload(), name) : nullptr;
    if (member == nullptr || !member->IsArray()) {
        return std::nullopt;
    }
    std::vector<std::string> texts;
    for (const auto& element : member->GetArray()) {
        if (element.IsString()) {
            texts.push_back(textOf(element));
        }
    }
    return texts;
}

std::optional<std::vector<std::string>> Envelope::elements(const std::string& name) const {
    const Value* const member = memberOf(tree->root, name);
    if (member == nullptr || !member->IsArray()) {
        return std::nullopt;
    }
    std::vector<std::string> texts;
    for (const auto& element : member->GetArray()) {
        texts.push_back(compactText(element));
    }
    return texts;
}

std::string Envelope::compact(const std::string& name) const {
    const Value* const member = memberOf(tree->root, name);
    return member == nullptr ? "" : compactText(*member);
}

std::vector<std::string> Envelope::names() const {
    std::vector<std::string> result;
    if (isObject()) {
        for (const auto& member : tree->root.GetObject()) {
            result.push_back(textOf(member.name));
        }
    }
    return result;
}

std::string stringText(const std::string& text) {
    return compactText(Value(rapidjson::StringRef(text.data(), static_cast<rapidjson::SizeType>(text.size()))));
}

std::string arrayText(const std::vector<std::string>& texts) {
    std::string result;
    for (const auto& text : texts) {
        result += (result.empty() ? "[" : ",") + stringText(text);
    }
    return result.empty() ? "[]" : result + "]";
}

std::optional<std::vector<std::optional<std::string>>> arrayElements(const std::string& json) {
    rapidjson::Document root;
    if (root.Parse(json.c_str()).HasParseError()) {
        return std::nullopt;
    }
    std::vector<std::optional<std::string>> elements;
    for (const auto& element : root.GetArray()) {
        elements.push_back(element.IsString() ? std::optional(textOf(element)) : std::nullopt);
    }
    return elements;
}

}  // namespace SettingsHandlerFuzz
