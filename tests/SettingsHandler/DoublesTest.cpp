#include "HandlerFixture.h"
#include "SettingsHandlerTesting/contracts/StorageContract.h"

namespace SettingsHandlerTesting {

struct FakeStorageMaker {
    Journal journal;
    FakeStorage fake{journal};
    SDKWrapper::StorageManagerInterface& storage() { return fake; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeStorage, StorageContract, FakeStorageMaker, NumberedNames);

}  // namespace SettingsHandlerTesting

namespace SettingsHandlerTests {

using SettingsHandlerTesting::Journal;

TEST(JournalOfTheDoubles, KeepsTheOrderAndIsEmptyOnceTaken) {
    Journal journal;
    journal.add("first");
    journal.add("second");
    EXPECT_EQ(journal.take(), (Entries{"first", "second"}));
    EXPECT_EQ(journal.take(), Entries{});
}

TEST(JournalOfTheDoubles, RunsAnActionOnceAndAfterItsEntryIsRecorded) {
    Journal journal;
    journal.at("call(", [&] { journal.add("inside"); });
    EXPECT_FALSE(journal.allActionsRun());
    journal.add("other call(");
    journal.add("call(1)");
    journal.add("call(2)");
    EXPECT_TRUE(journal.allActionsRun());
    EXPECT_EQ(journal.take(), (Entries{"other call(", "call(1)", "inside", "call(2)"}));
}

TEST(JournalOfTheDoubles, LetsAnActionsExceptionOutOfTheCall) {
    Journal journal;
    SettingsHandlerTesting::FakeStorage storage(journal);
    journal.at("storage.setValue", [] { throw std::runtime_error("storage"); });
    EXPECT_THROW(storage.setValue("k", "v"), std::runtime_error);
    EXPECT_TRUE(storage.values.empty());
    EXPECT_TRUE(storage.setValue("k", "v"));
}

TEST(FakeStorageOfTheDoubles, RefusesAndChangesNothing) {
    Journal journal;
    SettingsHandlerTesting::FakeStorage storage(journal);
    storage.values = {{"k", "v"}};
    storage.refusesWrites = storage.refusesRemoval = storage.refusesClearing = true;
    EXPECT_FALSE(storage.setValue("k", "w"));
    EXPECT_FALSE(storage.removeValue("k"));
    EXPECT_FALSE(storage.clearStorage());
    EXPECT_EQ(storage.values, (Values{{"k", "v"}}));
}

}  // namespace SettingsHandlerTests
