#include "support/Check.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace SettingsHandlerFuzz {

namespace {

bool startsWith(const std::string& entry, std::string_view beginning) {
    return entry.compare(0, beginning.size(), beginning) == 0;
}

bool isOfObserver(const std::string& entry) {
    return startsWith(entry, "observer");
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

void checkSameSorted(const Entries& actual, const Entries& expected, std::string_view what, std::string_view detail) {
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
    fail(what, detail);
}

}  // namespace

void fail(std::string_view what, std::string_view detail) {
    std::fprintf(stderr, "does not hold: %.*s%.*s\n", static_cast<int>(what.size()), what.data(),
                 static_cast<int>(detail.size()), detail.data());
    std::abort();
}

void checkSame(const Entries& actual, const Entries& expected, std::string_view what, std::string_view detail) {
    if (actual != expected) {
        Entries sortedActual = actual;
        Entries sortedExpected = expected;
        sortObservers(sortedActual);
        sortObservers(sortedExpected);
        checkSameSorted(sortedActual, sortedExpected, what, detail);
    }
}

bool startsWithOneOf(const std::string& entry, std::initializer_list<std::string_view> beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&](std::string_view beginning) { return startsWith(entry, beginning); });
}

bool hasEntry(const Entries& entries, std::initializer_list<std::string_view> beginnings) {
    return std::any_of(entries.begin(), entries.end(),
                       [&](const std::string& entry) { return startsWithOneOf(entry, beginnings); });
}

}  // namespace SettingsHandlerFuzz
