#include "Keys.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "Wire/Catalogue.h"

namespace SettingsCtl {

namespace {

bool isSameLetter(char left, char right) {
    return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
}

/// The edit distance (Levenshtein), one row of its table at a time.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (const char letter : from) {
        std::size_t diagonal = row[0]++;
        for (std::size_t column = 1; column < row.size(); ++column) {
            const std::size_t replaced = diagonal + (isSameLetter(letter, to[column - 1]) ? 0 : 1);
            diagonal = row[column];
            row[column] = std::min({replaced, row[column] + 1, row[column - 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string nearestKey(const std::string& key) {
    const auto& settings = Wire::catalogue();
    const auto nearest = std::min_element(settings.begin(), settings.end(), [&](const auto& left, const auto& right) {
        return distance(key, left.key) < distance(key, right.key);
    });
    return nearest->key;
}

std::optional<std::string> unknownKey(const Context& context, const std::string& key) {
    if (context.anyKey || Wire::findSetting(key) != nullptr) {
        return std::nullopt;
    }
    return "unknown key '" + key + "'; did you mean '" + nearestKey(key) + "'? --any-key accepts any key";
}

void refuseUnknownKeys(const Context& context, const std::vector<std::string>& keys) {
    for (const auto& key : keys) {
        if (const auto fault = unknownKey(context, key)) {
            throw Failure(WRONG_USAGE, *fault);
        }
    }
}

void warnOfUnlistedChoice(const Context& context, const std::string& key, const std::string& value) {
    const auto* const setting = Wire::findSetting(key);
    if (setting == nullptr || setting->kind != Wire::SettingKind::CHOICE ||
        std::find(setting->values.begin(), setting->values.end(), value) != setting->values.end()) {
        return;
    }
    printWarning(context.style, "'" + value + "' is not a listed value of '" + key + "': " + joined(setting->values));
}

}  // namespace SettingsCtl
