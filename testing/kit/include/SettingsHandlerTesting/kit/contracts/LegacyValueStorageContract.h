#pragma once

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandlerKit/LegacyValueStorage.h"
#include "SettingsHandlerTesting/contracts/StorageContract.h"

namespace SettingsHandlerTesting {

/// Checks what `CheckedSettingsHandler` requires of a storage that implements `LegacyValueStorage`, too. It is run like
/// `StorageContract`, with the same maker and the hooks `reopen` and `failWrites`.
///
/// Not checked: a loss of power meanwhile, and that no limit applies.
template <typename Maker>
class LegacyValueStorageContract : public ::testing::Test {
    /// @cond
protected:
    SDKWrapper::StorageManagerInterface& storage() { return maker.storage(); }

    std::string setAside(const std::string& key) {
        auto* const legacyValues = dynamic_cast<SettingsHandlerKit::LegacyValueStorage*>(&storage());
        if (legacyValues == nullptr) {
            ADD_FAILURE() << "the storage is not a LegacyValueStorage";
            return "";
        }
        return legacyValues->setAside(key);
    }

    std::string read(const std::string& key) {
        std::string value;
        storage().getValue(key, value);
        return value;
    }

    Maker maker;
    /// @endcond
};

TYPED_TEST_SUITE_P(LegacyValueStorageContract);
// A program may include this header without an instantiation.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(LegacyValueStorageContract);

/// The handler must not find the value again, and a person must be able to.
TYPED_TEST_P(LegacyValueStorageContract, MovesTheValueToTheNextFreeKey) {
    for (const std::string newKey : {"key.unusable", "key.unusable.2", "key.unusable.3"}) {
        const std::string value = "value of " + newKey;
        ASSERT_TRUE(this->storage().setValue("key", value));
        EXPECT_EQ(this->setAside("key"), newKey);
        EXPECT_EQ(this->read("key"), "") << "the value is still stored under its old key";
        EXPECT_EQ(this->read(newKey), value);
    }
    EXPECT_EQ(this->read("key.unusable"), "value of key.unusable") << "a value that was set aside was overwritten";
}

/// The old key is free for a new value, and other keys have nothing to do with it.
TYPED_TEST_P(LegacyValueStorageContract, LeavesOtherKeysAlone) {
    ASSERT_TRUE(this->storage().setValue("other", "kept"));
    ASSERT_TRUE(this->storage().setValue("key", "old"));
    EXPECT_EQ(this->setAside("key"), "key.unusable");
    EXPECT_TRUE(this->storage().setValue("key", "new"));
    EXPECT_EQ(this->read("key"), "new");
    EXPECT_EQ(this->read("key.unusable"), "old");
    EXPECT_EQ(this->read("other"), "kept");
}

/// The next start would find the value again.
TYPED_TEST_P(LegacyValueStorageContract, KeepsTheResultWhenItIsReopened) {
    if constexpr (!offers<ReopenHook, TypeParam>) {
        GTEST_SKIP() << "needs `void reopen()` in the maker";
    } else {
        ASSERT_TRUE(this->storage().setValue("key", "value"));
        EXPECT_EQ(this->setAside("key"), "key.unusable");
        this->maker.reopen();
        EXPECT_EQ(this->read("key"), "");
        EXPECT_EQ(this->read("key.unusable"), "value");
    }
}

/// The handler reports the failure and does not start: the value is not to be lost.
TYPED_TEST_P(LegacyValueStorageContract, ChangesNothingWhenAWriteFails) {
    if constexpr (!offers<FailWritesHook, TypeParam>) {
        GTEST_SKIP() << "needs `void failWrites(bool fail)` in the maker";
    } else {
        ASSERT_TRUE(this->storage().setValue("key", "value"));
        this->maker.failWrites(true);
        EXPECT_EQ(this->setAside("key"), "");
        EXPECT_EQ(this->read("key"), "value");
        EXPECT_EQ(this->read("key.unusable"), "");
    }
}

REGISTER_TYPED_TEST_SUITE_P(LegacyValueStorageContract, MovesTheValueToTheNextFreeKey, LeavesOtherKeysAlone,
                            KeepsTheResultWhenItIsReopened, ChangesNothingWhenAWriteFails);

}  // namespace SettingsHandlerTesting
