#pragma once

#include <string>

#include <gtest/gtest.h>

#include "SDKWrapper/StorageManagerInterface.h"

namespace SettingsHandlerTesting {

/// What the handler relies on in every storage. Run it over your own with three lines:
///
///     struct MyStorageMaker { MyStorage& storage(); … };
///     INSTANTIATE_TYPED_TEST_SUITE_P(MyStorage, StorageContract, MyStorageMaker);
///
/// `Maker` is default-constructed for each test and gives an empty storage.
template <typename Maker>
class StorageContract : public ::testing::Test {
protected:
    SDKWrapper::StorageManagerInterface& storage() { return maker.storage(); }

    std::string read(const std::string& key) {
        std::string value = "left over";
        storage().getValue(key, value);
        return value;
    }

private:
    Maker maker;
};

/// Names the tests of an instantiation after nothing but their number; pass it as the last argument where the compiler
/// insists on one (clang with -Wpedantic).
struct NumberedNames {
    template <typename Maker>
    static std::string GetName(int number) {
        return std::to_string(number);
    }
};

TYPED_TEST_SUITE_P(StorageContract);

TYPED_TEST_P(StorageContract, EmptiesTheOutputWhenTheKeyIsAbsent) {
    EXPECT_EQ(this->read("absent"), "");
}

TYPED_TEST_P(StorageContract, GivesBackWhatWasStored) {
    EXPECT_TRUE(this->storage().setValue("key", "value"));
    EXPECT_EQ(this->read("key"), "value");
}

TYPED_TEST_P(StorageContract, ReplacesAValue) {
    EXPECT_TRUE(this->storage().setValue("key", "old"));
    EXPECT_TRUE(this->storage().setValue("key", "new"));
    EXPECT_EQ(this->read("key"), "new");
}

TYPED_TEST_P(StorageContract, KeepsAnyBytes) {
    using namespace std::string_literals;
    const std::string bytes = "\0quote\" \xff\xc3 \n end\0"s;
    EXPECT_TRUE(this->storage().setValue(bytes, bytes));
    EXPECT_EQ(this->read(bytes), bytes);
    EXPECT_EQ(this->read("\0"s), "") << "a key was cut at its NUL";
}

TYPED_TEST_P(StorageContract, TellsKeysApartByEveryByte) {
    EXPECT_TRUE(this->storage().setValue("key", "lower"));
    EXPECT_TRUE(this->storage().setValue("Key", "upper"));
    EXPECT_TRUE(this->storage().setValue("key ", "blank"));
    EXPECT_EQ(this->read("key"), "lower");
    EXPECT_EQ(this->read("Key"), "upper");
    EXPECT_EQ(this->read("key "), "blank");
}

TYPED_TEST_P(StorageContract, StoresTheEmptyValue) {
    EXPECT_TRUE(this->storage().setValue("key", "value"));
    EXPECT_TRUE(this->storage().setValue("key", ""));
    EXPECT_EQ(this->read("key"), "");
}

TYPED_TEST_P(StorageContract, RemovesOneKeyOnly) {
    EXPECT_TRUE(this->storage().setValue("gone", "1"));
    EXPECT_TRUE(this->storage().setValue("kept", "2"));
    EXPECT_TRUE(this->storage().removeValue("gone"));
    EXPECT_EQ(this->read("gone"), "");
    EXPECT_EQ(this->read("kept"), "2");
}

TYPED_TEST_P(StorageContract, ClearsEverything) {
    EXPECT_TRUE(this->storage().setValue("one", "1"));
    EXPECT_TRUE(this->storage().setValue("two", "2"));
    EXPECT_TRUE(this->storage().clearStorage());
    EXPECT_EQ(this->read("one"), "");
    EXPECT_EQ(this->read("two"), "");
    EXPECT_TRUE(this->storage().setValue("one", "again"));
    EXPECT_EQ(this->read("one"), "again");
}

REGISTER_TYPED_TEST_SUITE_P(StorageContract, EmptiesTheOutputWhenTheKeyIsAbsent, GivesBackWhatWasStored, ReplacesAValue,
                            KeepsAnyBytes, TellsKeysApartByEveryByte, StoresTheEmptyValue, RemovesOneKeyOnly,
                            ClearsEverything);

}  // namespace SettingsHandlerTesting
