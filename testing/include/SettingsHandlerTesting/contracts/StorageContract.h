#pragma once

#include <cstddef>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandlerTesting/contracts/Hooks.h"

namespace SettingsHandlerTesting {

/// Checks what the handler requires of a storage. Run it on your own with three lines:
///
///     using namespace SettingsHandlerTesting;
///     struct MyStorageMaker { MyStorage own; SDKWrapper::StorageManagerInterface& storage() { return own; } };
///     INSTANTIATE_TYPED_TEST_SUITE_P(MyStorage, StorageContract, MyStorageMaker);
///
/// The maker is default-constructed for each check and has an empty storage. Its hooks, each for one check:
///
/// - `void reopen()`: closes the storage and opens it again, as a restart of the device does.
/// - `void failWrites(bool fail)`: whether writes fail from now on.
/// - `static constexpr bool anyThread = true;`: it may be called from any thread.
///
/// Not checked: values must survive a loss of power, which `reopen` does not simulate.
template <typename Maker>
class StorageContract : public ::testing::Test {
    /// @cond
protected:
    SDKWrapper::StorageManagerInterface& storage() { return maker.storage(); }

    std::string read(const std::string& key) {
        std::string value = "left over";
        storage().getValue(key, value);
        return value;
    }

    void store(const std::string& key, const std::string& value) {
        EXPECT_TRUE(storage().setValue(key, value)) << "setValue refused an ordinary value";
    }

    Maker maker;
    /// @endcond
};

/// The hook `reopen` of a maker.
template <typename Maker>
using ReopenHook = decltype(std::declval<Maker&>().reopen());
/// The hook `failWrites` of a maker.
template <typename Maker>
using FailWritesHook = decltype(std::declval<Maker&>().failWrites(true));

TYPED_TEST_SUITE_P(StorageContract);
// A program may include this header without an instantiation.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(StorageContract);

/// The handler reads several settings into one string: a value that is not set would be read as that of the next
/// setting.
TYPED_TEST_P(StorageContract, EmptiesTheOutputWhenTheKeyIsAbsent) {
    EXPECT_EQ(this->read("absent"), "") << "getValue must set its output also when nothing is stored";
}

/// The handler reports the stored value as the value of the setting.
TYPED_TEST_P(StorageContract, GivesBackWhatWasStored) {
    this->store("key", "value");
    EXPECT_EQ(this->read("key"), "value");
    EXPECT_EQ(this->read("key"), "value") << "the second reading differs from the first";
}

/// Each setting is stored under one key.
TYPED_TEST_P(StorageContract, ReplacesAValue) {
    this->store("key", "old");
    this->store("key", "new");
    EXPECT_EQ(this->read("key"), "new");
}

/// Keys and values come from requests: both are arbitrary bytes.
TYPED_TEST_P(StorageContract, KeepsAnyBytes) {
    using namespace std::string_literals;
    const std::string bytes = "\0quote\" \xff\xc3 \n end\0"s;
    this->store(bytes, bytes);
    EXPECT_EQ(this->read(bytes), bytes);
    EXPECT_EQ(this->read("\0"s), "") << "a key was cut at its NUL";
}

/// Comparisons are exact: a value that is read back in another form would be reported as a change.
TYPED_TEST_P(StorageContract, KeepsValuesInTheFormInWhichTheyCame) {
    for (const std::string value : {"007", "1e3", "true", "NULL", " Den ", R"(["", ""])", "'; --",
                                    "K\xc3\xbc"
                                    "che",
                                    "Ku\xcc\x88"
                                    "che"}) {
        this->store("key", value);
        EXPECT_EQ(this->read("key"), value) << "the storage has taken the text for something else, or tidied it";
    }
}

/// Keys are case-sensitive, and unknown keys are stored under their own text.
TYPED_TEST_P(StorageContract, TellsKeysApartByEveryByte) {
    this->store("key", "lower");
    this->store("Key", "upper");
    this->store("key ", "blank");
    EXPECT_EQ(this->read("key"), "lower");
    EXPECT_EQ(this->read("Key"), "upper");
    EXPECT_EQ(this->read("key "), "blank");
}

/// A setting may be set to the empty string: the old value must not remain.
TYPED_TEST_P(StorageContract, StoresTheEmptyValue) {
    this->store("key", "value");
    this->store("key", "");
    EXPECT_EQ(this->read("key"), "");
}

/// A truncated value would be reported as the value of the setting. A size limit is allowed: `setValue` then returns
/// false and keeps the old value.
TYPED_TEST_P(StorageContract, KeepsALargeValueWholeOrRefusesIt) {
    std::string last = "first";
    this->store("key", last);
    for (std::size_t size = 1024; size <= 1024UL * 1024UL; size *= 4) {
        const std::string value(size, 'x');
        if (this->storage().setValue("key", value)) {
            last = value;
        } else {
            EXPECT_GT(size, 1024U) << "lists of settings take a kilobyte and more";
        }
        // Compared as a bool: a failure would print a megabyte.
        EXPECT_TRUE(this->read("key") == last) << "a value of " << size << " bytes was neither kept whole nor refused";
    }
}

/// The migration removes single keys; the others stay.
TYPED_TEST_P(StorageContract, RemovesOneKeyOnly) {
    this->store("gone", "1");
    this->store("kept", "2");
    EXPECT_TRUE(this->storage().removeValue("gone"));
    EXPECT_EQ(this->read("gone"), "");
    EXPECT_EQ(this->read("kept"), "2");
}

/// The handler ignores the result of a removal, but an exception would leave its operation.
TYPED_TEST_P(StorageContract, RemovingAnAbsentKeyDoesNoHarm) {
    this->store("kept", "2");
    EXPECT_NO_THROW(this->storage().removeValue("absent"));
    EXPECT_EQ(this->read("absent"), "");
    EXPECT_EQ(this->read("kept"), "2");
}

/// A log-out clears the storage and reads every setting again; the storage is used afterwards.
TYPED_TEST_P(StorageContract, ClearsEverything) {
    this->store("one", "1");
    this->store("two", "2");
    EXPECT_TRUE(this->storage().clearStorage());
    EXPECT_EQ(this->read("one"), "");
    EXPECT_EQ(this->read("two"), "");
    this->store("one", "again");
    EXPECT_EQ(this->read("one"), "again");
    EXPECT_TRUE(this->storage().clearStorage());
    EXPECT_TRUE(this->storage().clearStorage()) << "an empty storage is cleared, too";
}

/// After a restart the handler has only the stored values.
TYPED_TEST_P(StorageContract, KeepsEverythingWhenItIsReopened) {
    if constexpr (!offers<ReopenHook, TypeParam>) {
        GTEST_SKIP() << "needs `void reopen()` in the maker";
    } else {
        using namespace std::string_literals;
        this->store("changed", "old");
        this->store("changed", "new");
        this->store("removed", "1");
        this->store("bytes\0"s, "\0\xff"s);
        EXPECT_TRUE(this->storage().removeValue("removed"));
        this->maker.reopen();
        EXPECT_EQ(this->read("changed"), "new");
        EXPECT_EQ(this->read("removed"), "");
        EXPECT_EQ(this->read("bytes\0"s), "\0\xff"s);
        EXPECT_TRUE(this->storage().clearStorage());
        this->maker.reopen();
        EXPECT_EQ(this->read("changed"), "") << "what was cleared has come back";
    }
}

/// After a false the handler continues with the old value, in its cache and in its replies.
TYPED_TEST_P(StorageContract, KeepsTheOldValueWhenAWriteFails) {
    if constexpr (!offers<FailWritesHook, TypeParam>) {
        GTEST_SKIP() << "needs `void failWrites(bool fail)` in the maker";
    } else {
        this->store("key", "old");
        this->maker.failWrites(true);
        EXPECT_FALSE(this->storage().setValue("key", "new")) << "a failed write must answer false";
        EXPECT_EQ(this->read("key"), "old");
        EXPECT_FALSE(this->storage().setValue("other", "new"));
        EXPECT_EQ(this->read("other"), "");
        this->maker.failWrites(false);
        this->store("key", "new");
        EXPECT_EQ(this->read("key"), "new");
    }
}

/// Requests and notifications may run on different threads, and the handler holds no lock while it reads and writes.
TYPED_TEST_P(StorageContract, MayBeUsedFromAnyThread) {
    if constexpr (!offers<AnyThreadHook, TypeParam>) {
        GTEST_SKIP() << "needs `static constexpr bool anyThread = true;` in the maker";
    } else {
        const auto use = [this](const std::string& key) {
            std::string value;
            for (int round = 0; round < 20; ++round) {
                EXPECT_TRUE(this->storage().setValue(key, std::to_string(round)));
                this->storage().getValue(key, value);
                EXPECT_EQ(value, std::to_string(round));
            }
        };
        auto other = std::async(std::launch::async, use, "other");
        use("own");
        EXPECT_NO_THROW(other.get());
        EXPECT_EQ(this->read("other"), "19");
    }
}

REGISTER_TYPED_TEST_SUITE_P(StorageContract, EmptiesTheOutputWhenTheKeyIsAbsent, GivesBackWhatWasStored, ReplacesAValue,
                            KeepsAnyBytes, KeepsValuesInTheFormInWhichTheyCame, TellsKeysApartByEveryByte,
                            StoresTheEmptyValue, KeepsALargeValueWholeOrRefusesIt, RemovesOneKeyOnly,
                            RemovingAnAbsentKeyDoesNoHarm, ClearsEverything, KeepsEverythingWhenItIsReopened,
                            KeepsTheOldValueWhenAWriteFails, MayBeUsedFromAnyThread);

}  // namespace SettingsHandlerTesting
