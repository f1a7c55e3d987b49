#include <algorithm>
#include <cstdlib>
#include <new>
#include <ostream>

#include <gtest/gtest.h>
#include <malloc.h>

#include "server/protocol/History.h"

// A separate program, because it counts all memory that C++ takes.

namespace {

std::size_t bytesInUse = 0;

/// With the size that the heap keeps before it.
std::size_t sizeOf(void* block) {
    return malloc_usable_size(block) + sizeof(std::size_t);
}

}  // namespace

void* operator new(std::size_t size) {
    void* const block = std::malloc(size);  // NOLINT(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    bytesInUse += sizeOf(block);
    return block;
}

void operator delete(void* block) noexcept {
    if (block != nullptr) {
        bytesInUse -= sizeOf(block);
        std::free(block);  // NOLINT(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
    }
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    operator delete(block);
}

namespace SettingsHandlerKit {

/// What is added, and how often.
struct Load {
    const char* name;
    std::size_t frameSize;
    std::size_t keySize;
    /// Of each notice that follows each event; 0 for no notices.
    std::size_t keysOfNotice;
    unsigned long count;
};

/// For GoogleTest, which would show the bytes.
void PrintTo(const Load& load, std::ostream* output) {
    *output << load.name;
}

class HistoryMemory : public ::testing::TestWithParam<Load> {};

TEST_P(HistoryMemory, TakesNoMoreThanTheLimit) {
    const Load& load = GetParam();
    std::vector<std::string> keys;
    for (std::size_t number = 0; number < load.keysOfNotice; ++number) {
        keys.push_back(std::string(load.keySize, 'k') + std::to_string(number));
    }
    const std::string key(load.keySize, 'k');
    const std::size_t before = bytesInUse;
    History history;
    std::size_t most = 0;
    for (unsigned long sequence = 1; sequence <= load.count; ++sequence) {
        history.add({std::make_shared<const std::string>(load.frameSize, 'x'), {key}, sequence});
        if (!keys.empty()) {
            history.add({std::make_shared<const std::string>("notice"), keys});
        }
        const std::size_t taken = bytesInUse - before;
        EXPECT_LE(taken, history.size());
        most = std::max(most, taken);
    }
    EXPECT_LE(most, History::maximumBytes);
    RecordProperty("most", std::to_string(most));
    history.clear();
    EXPECT_LE(bytesInUse - before, 2048U) << "nothing is kept";
}

const Load loads[] = {
    {"EmptyFrames", 0, 0, 0, 3000},
    {"UsualFrames", 200, 12, 0, 3000},
    {"AsManyAsFitWithLongKeys", 200, 256, 0, 3000},
    {"BothLimitsAtOnce", 350, 20, 0, 3000},
    {"Frames4000", 4000, 12, 0, 1000},
    {"LargestValues", 131000, 12, 0, 50},
    {"LargerThanAll", 600000, 12, 0, 10},
    {"ManyNotices", 200, 12, 1, 3000},
    {"LargeNotices", 200, 250, 1000, 30},
    {"NoticesOfShortKeys", 10, 1, 27, 3000},
};

INSTANTIATE_TEST_SUITE_P(Loads, HistoryMemory, ::testing::ValuesIn(loads),
                         [](const auto& load) { return load.param.name; });

}  // namespace SettingsHandlerKit
