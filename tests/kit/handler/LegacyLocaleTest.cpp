#include "CheckedHandlerFixture.h"
#include "SettingsHandlerKit/LegacyValueStorage.h"

namespace SettingsHandlerKit {

namespace {

struct PowerCut {};

const std::string unusable = R"({"primary":"en-US"})";
const std::string failure = "the stored value of 'orliaLocale' is unusable and could not be set aside";

std::string movedTo(const std::string& key) {
    return "log 3 settings-host:rejected stored orliaLocale: must be a JSON array of at most 32 levels; moved to '" +
           key + "'";
}

const Entries migration{"log 1 SettingsHandler:migrateExistingDeviceSettings", "storage.getValue(orliaLocale)",
                        "log 1 SettingsHandler:No value retrieved for orliaLocale", "storage.getValue(timezone)",
                        "log 1 SettingsHandler:No value retrieved for timezone"};

Entries operator+(Entries first, const Entries& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// A storage that can rename.
class RenamingStorage : public SettingsHandlerTesting::FakeStorage, public LegacyValueStorage {
public:
    using FakeStorage::FakeStorage;

    std::string setAside(const std::string& key) override {
        if (refusesWrites) {
            return "";
        }
        values["renamed"] = values[key];
        values.erase(key);
        return "renamed";
    }
};

}  // namespace

class LegacyLocale : public CheckedHandler {
protected:
    void expectFailure(World& failing) {
        try {
            failing->migrateExistingDeviceSettings();
            ADD_FAILURE() << "it did not fail";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), failure);
        }
    }

    SettingsHandlerTesting::FakeStorage& storage = world.storage;
};

TEST_F(LegacyLocale, IsMovedToAnotherKeyBeforeTheMigration) {
    storage.put("orliaLocale", unusable);
    SettingsHandlerTesting::TestHandler plain;
    plain.storage.put("orliaLocale", unusable);
    EXPECT_EXIT(plain->migrateExistingDeviceSettings(), ::testing::KilledBySignal(SIGABRT), "precondition");
    world.journal.take();
    world->migrateExistingDeviceSettings();
    EXPECT_EQ(world.journal.take(), (Entries{"storage.getValue(orliaLocale)", "storage.getValue(orliaLocale.unusable)",
                                             "storage.setValue(orliaLocale.unusable, " + unusable + ")",
                                             "storage.removeValue(orliaLocale)", movedTo("orliaLocale.unusable")} +
                                     migration));
    EXPECT_EQ(storage.values, (std::map<std::string, std::string>{{"orliaLocale.unusable", unusable}}));
    world->migrateExistingDeviceSettings();
    EXPECT_EQ(world.journal.take(), (Entries{"storage.getValue(orliaLocale)"} + migration)) << "the second time";
}

TEST_F(LegacyLocale, TakesTheFirstFreeKey) {
    storage.put("orliaLocale", unusable);
    storage.put("orliaLocale.unusable", "5");
    storage.put("orliaLocale.unusable.2", "null");
    storage.put("orliaLocale.unusable.4", "true");
    world->migrateExistingDeviceSettings();
    EXPECT_EQ(storage.stored("orliaLocale.unusable.3"), unusable);
    EXPECT_EQ(storage.stored("orliaLocale"), "");
    EXPECT_EQ(storage.values.size(), 4U);
}

TEST_F(LegacyLocale, IsCopiedOnceWhenThePowerFailsBeforeTheRemoval) {
    storage.put("orliaLocale", unusable);
    for (int cut = 0; cut < 3; ++cut) {
        world.journal.at("storage.removeValue(orliaLocale)", [] { throw PowerCut(); });
        EXPECT_THROW(world->migrateExistingDeviceSettings(), PowerCut);
        EXPECT_EQ(storage.stored("orliaLocale"), unusable);
    }
    storage.refusesWrites = true;
    world->migrateExistingDeviceSettings();
    EXPECT_EQ(storage.values, (std::map<std::string, std::string>{{"orliaLocale.unusable", unusable}}))
        << "the copy is used, also when the storage is full now";
}

TEST_F(LegacyLocale, StaysWhereItIsWhenTheStorageIsFull) {
    storage.put("orliaLocale", unusable);
    storage.refusesWrites = true;
    expectFailure(world);
    storage.refusesWrites = false;
    storage.refusesRemoval = true;
    expectFailure(world);
    EXPECT_EQ(storage.stored("orliaLocale"), unusable);
    EXPECT_EQ(world.sdkBridge->locales, Entries{"en-US"});
    storage.refusesRemoval = false;
    world->migrateExistingDeviceSettings();
    EXPECT_EQ(storage.values, (std::map<std::string, std::string>{{"orliaLocale.unusable", unusable}}));
}

TEST_F(LegacyLocale, AStorageWithAnAnswerToEveryKeyIsNotSearchedForEver) {
    for (int number = 1; number < 2000; ++number) {
        storage.put(number == 1 ? "orliaLocale.unusable" : "orliaLocale.unusable." + std::to_string(number), "5");
    }
    storage.put("orliaLocale", unusable);
    expectFailure(world);
}

TEST_F(LegacyLocale, IsRenamedByAStorageThatCan) {
    RenamingStorage renaming(world.journal);
    renaming.put("orliaLocale", unusable);
    World other([&](World& around) { around.used.storage = &renaming; });
    renaming.refusesWrites = true;
    expectFailure(other);
    EXPECT_EQ(renaming.stored("orliaLocale"), unusable);
    renaming.refusesWrites = false;
    world.journal.take();
    other->migrateExistingDeviceSettings();
    EXPECT_EQ(world.journal.take(),
              (Entries{"storage.getValue(orliaLocale)", movedTo("renamed"),
                       "log 1 SettingsHandler:migrateExistingDeviceSettings", "storage.getValue(orliaLocale)",
                       "log 1 SettingsHandler:No value retrieved for orliaLocale", "storage.getValue(timezone)",
                       "log 1 SettingsHandler:No value retrieved for timezone"}));
    EXPECT_EQ(renaming.stored("renamed"), unusable);
}

TEST_F(LegacyLocale, IsMigratedAsEverWhenItDoesNoHarm) {
    for (const auto* value : {R"(["fr-FR"])", "fr-FR", "[]", R"(["en-US"])"}) {
        storage.put("orliaLocale", value);
        SettingsHandlerTesting::TestHandler plain;
        plain.storage.put("orliaLocale", value);
        plain->migrateExistingDeviceSettings();
        world->migrateExistingDeviceSettings();
        EXPECT_EQ(storage.values, plain.storage.values) << value;
        EXPECT_EQ(world.sdkBridge->locales, plain.sdkBridge->locales) << value;
        world.sdkBridge->locales = {"en-US"};
    }
}

}  // namespace SettingsHandlerKit
