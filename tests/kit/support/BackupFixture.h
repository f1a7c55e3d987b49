#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "kit/support/OpenStorage.h"
#include "storage/Backup.h"
#include "storage/FileNames.h"
#include "storage/KeyValueTable.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

/// A database that can be backed up, on a disk that can fail.
class BackupFixture : public ::testing::Test {
protected:
    void put(const std::string& key, const std::string& value) { table.put(key, value); }

    /// So many values that a backup takes several steps.
    void fill() {
        for (int number = 0; number < 40; ++number) {
            put("key" + std::to_string(number), std::string(5000, 'v'));
        }
    }

    std::string valueIn(const std::string& backup, const std::string& key) {
        const std::string opened = folder / "opened.db";
        std::filesystem::copy_file(backup, opened, std::filesystem::copy_options::overwrite_existing);
        Database copy(opened, disk);
        return KeyValueTable(copy, "settings").get(key).value_or("(none)");
    }

    std::string valueIn(int generation, const std::string& key) { return valueIn(backupName(file, generation), key); }

    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder / "state")) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    void makeOlder(int generation, std::chrono::seconds by) {
        const std::string backup = backupName(file, generation);
        std::filesystem::last_write_time(backup, std::filesystem::last_write_time(backup) - by);
    }

    SettingsHostTests::LogRecording log;
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    TestSupport::TemporaryDirectory folder;
    std::string file = folder / "state/settings.db";
    SettingsHostTests::OpenStorage storage{file, disk};
    Database& database = storage.database();
    KeyValueTable table{database, "settings"};
};

}  // namespace SettingsHandlerKit
