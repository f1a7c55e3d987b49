#include <filesystem>

#include <sqlite3.h>

#include "SettingsHandlerKit/Storage.h"
#include "kit/support/LogRecording.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

/// The files in version-1.0 were left by a settings-host 1.0.0 that was killed: its last change, of deviceName, is in
/// the write-ahead log alone. They are binary because SQL text cannot hold such a log.
class FormatTest : public ::testing::Test {
protected:
    FormatTest() { std::filesystem::copy(FILES_OF_VERSION_1_0, folder.path()); }

    static std::string get(Storage& storage, const std::string& key) {
        std::string value;
        storage.getValue(key, value);
        return value;
    }

    /// Runs `statements` on the file. Returns: what they print, a line for each row.
    static std::string sql(const std::string& database, const std::string& statements) {
        sqlite3* connection = nullptr;
        EXPECT_EQ(sqlite3_open(database.c_str(), &connection), SQLITE_OK);
        std::string text;
        const auto print = [](void* out, int count, char** columns, char**) {
            for (int column = 0; column < count; ++column) {
                *static_cast<std::string*>(out) += std::string(columns[column]) + (column + 1 < count ? "|" : "\n");
            }
            return 0;
        };
        EXPECT_EQ(sqlite3_exec(connection, statements.c_str(), print, &text, nullptr), SQLITE_OK)
            << sqlite3_errmsg(connection);
        sqlite3_close(connection);
        return text;
    }

    /// All that a version looks at before it uses a file, and what it expects in it.
    static std::string formatOf(const std::string& database) {
        return sql(database,
                   "PRAGMA application_id; PRAGMA user_version; PRAGMA page_size; PRAGMA encoding; "
                   "PRAGMA journal_mode; SELECT type, name, sql FROM sqlite_schema ORDER BY name");
    }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder;
    std::string file = folder / "settings.db";
};

TEST_F(FormatTest, AFileOfVersion1_0IsOpenedWithItsLog) {
    Storage storage(file);
    EXPECT_EQ(storage.recovery().source, Recovery::Source::NOT_NEEDED);
    EXPECT_EQ(get(storage, "deviceName"), "K\u00fcche") << "from the write-ahead log";
    EXPECT_EQ(get(storage, "friendlyName"), "Wohnzimmer-Ger\u00e4t");
    EXPECT_EQ(get(storage, "companionDevice"), R"(["phone","Anna"])");
    EXPECT_EQ(get(storage, "captionsFontSize"), "FONT_LARGE");
    EXPECT_EQ(get(storage, "handsFreeAlwaysOnDiscovered"), "true");
    EXPECT_EQ(get(storage, "orliaLocale.unusable"), R"({"language":"en"})");
    EXPECT_EQ(storage.health().keys, 6U);
    const auto simulation = storage.state("simulation");
    EXPECT_EQ(simulation->load("orliaLocale"), R"(["de-DE","en-US"])");
    EXPECT_EQ(simulation->load("timezone"), "Europe/Berlin");
    EXPECT_EQ(simulation->load("currentHandsFreeStatus"), "on");
    EXPECT_TRUE(storage.setValue("deviceName", "Den"));
    EXPECT_EQ(log.take(), std::vector<std::string>());
}

TEST_F(FormatTest, WhatThisVersionWritesIsWhatVersion1_0Opens) {
    const std::string expected = formatOf(file);
    const std::string made = folder / "made.db";
    for (const auto& used : {file, made}) {
        {
            Storage storage(used);
            EXPECT_TRUE(storage.state("simulation")->save("timezone", "Europe/Berlin"));
            EXPECT_TRUE(storage.state("web")->save("key", "value"));
            EXPECT_TRUE(storage.setValue("deviceName", "Den"));
            EXPECT_TRUE(storage.setValue("orliaLocale", "{}"));
            EXPECT_EQ(storage.setAside("orliaLocale").rfind("orliaLocale.unusable", 0), 0U);
            storage.backupNow();
        }
        EXPECT_EQ(formatOf(used), expected);
        EXPECT_EQ(formatOf(used + ".backup.1"), expected);
        Storage(used).clearStorage();
        EXPECT_EQ(formatOf(used), expected);
    }
}

TEST_F(FormatTest, AFileOfANewerVersionIsRefusedAndNothingIsChanged) {
    const TestSupport::TemporaryDirectory newer;
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, "PRAGMA user_version=2", nullptr, nullptr, nullptr), SQLITE_OK);
    // While it is open, so that its log is not emptied.
    for (const auto* name : {"settings.db", "settings.db-wal"}) {
        std::filesystem::copy_file(folder / name, newer / name);
    }
    sqlite3_close(connection);
    const std::string database = newer / "settings.db";
    const auto before = std::make_pair(TestSupport::contentOf(database), TestSupport::contentOf(database + "-wal"));
    try {
        const Storage storage(database);
        ADD_FAILURE() << "it was opened";
    } catch (const NewerDatabase& error) {
        EXPECT_EQ(error.what(), database + " was written by a newer version; left unchanged");
    }
    EXPECT_TRUE(before.first == TestSupport::contentOf(database));
    EXPECT_TRUE(before.second == TestSupport::contentOf(database + "-wal"));
    EXPECT_EQ(TestSupport::namesIn(newer.path()), (std::vector<std::string>{"settings.db", "settings.db-wal"}));
    EXPECT_EQ(log.take(), std::vector<std::string>());
}

}  // namespace SettingsHandlerKit
