#pragma once

#include <string>

#include "storage/StorageParts.h"

namespace SettingsHostTests {

/// A storage whose database a test can reach.
class OpenStorage : public SettingsHandlerKit::Storage {
public:
    using Storage::Storage;

    SettingsHandlerKit::Database& database() { return parts->database; }

    std::string get(const std::string& key) {
        std::string value = "left over";
        getValue(key, value);
        return value;
    }
};

}  // namespace SettingsHostTests
