#include "support/Check.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace SettingsHandlerFuzz {

namespace {

bool isOfObserver(const std::string& entry) {
    return entry.rfind("observer", 0) == 0;
}

void sortObservers(Entries& entries) {
    for (auto start = entries.begin(); start != entries.end();) {
        start = std::find_if(start, entries.end(), isOfObserver);
        const auto end = std::find_if_not(start, entries.end(), isOfObserver);
        std::sort(start, end);
        start = end;
    }
}

std::string entryAt(const Entries& entries, std::size_t index) {
    return index < entries.size() ? entries[index] : "(none)";
}

}  // namespace

void check(bool holds, const std::string& what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what.c_str());
        std::abort();
    }
}

void checkSame(Entries actual, Entries expected, const std::string& what) {
    sortObservers(actual);
    sortObservers(expected);
    if (actual == expected) {
        return;
    }
    const auto parting = std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
    const auto index = static_cast<std::size_t>(parting.first - actual.begin());
    for (std::size_t i = index > 3 ? index - 3 : 0; i < index; ++i) {
        std::fprintf(stderr, "  both:     %s\n", actual[i].c_str());
    }
    std::fprintf(stderr, "  entry %zu: %s\n  expected: %s\n", index, entryAt(actual, index).c_str(),
                 entryAt(expected, index).c_str());
    check(false, what);
}

bool hasEntry(const Entries& entries, const std::vector<std::string>& beginnings) {
    return std::any_of(entries.begin(), entries.end(), [&](const std::string& entry) {
        return std::any_of(beginnings.begin(), beginnings.end(),
                           [&](const std::string& beginning) { return entry.rfind(beginning, 0) == 0; });
    });
}

}  // namespace SettingsHandlerFuzz
