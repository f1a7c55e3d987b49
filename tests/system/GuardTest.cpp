#include "HostFixture.h"

namespace SystemTests {

/// Locale values sent by every way into the host. The rejected ones would end the process inside the handler.
class HostGuard : public HostTest {
protected:
    struct Text {
        const char* name;
        std::string value;
        bool rejected;
    };

    static std::vector<Text> texts() {
        return {{"object", "{}", true},
                {"string", "\"en-US\"", true},
                {"number", "5", true},
                {"null", "null", true},
                {"true", "true", true},
                {"object before a NUL", std::string("{}\0[\"en-US\"]", 12), true},
                {"array nested too deep", std::string(33, '[') + std::string(33, ']'), true},
                {"30,000 closed brackets", std::string(15000, '[') + std::string(15000, ']'), true},
                {"array before a NUL", std::string("[\"nu-LL\"]\0{}", 12), false},
                {"30,000 open brackets", std::string(30000, '['), false},
                {"no JSON", "en-US", false},
                {"empty array", "[]", false},
                {"array", "[\"fr-FR\"]", false}};
    }

    /// `value` as a JSON string.
    static std::string json(const std::string& value) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        writer.String(value);
        return {buffer.GetString(), buffer.GetSize()};
    }
};

TEST_F(HostGuard, RejectsLocalesOnTheSettingsSocket) {
    start();
    for (const auto& text : texts()) {
        SCOPED_TRACE(text.name);
        set("orliaLocale", json(text.value));
    }
    EXPECT_EQ(get("orliaLocale"), R"(["fr-FR"])");
    const std::string log = stop();
    std::size_t rejected = 0;
    for (auto at = log.find("was kept away"); at != std::string::npos; at = log.find("was kept away", at + 1)) {
        ++rejected;
    }
    EXPECT_EQ(rejected, 8U) << log;
}

TEST_F(HostGuard, ReadsDuplicatesAndEscapesAsTheHandlerDoes) {
    start();
    for (const auto* payload : {R"({"settingDBId":"orliaLocale","settingDBId":"deviceName","to":"{}"})",
                                R"({"settingDBId":"orliaLocale","to":"{}","to":"[\"de-DE\"]"})",
                                R"({"settingDBId":"orlia\u004cocale","to":"\u007b\u007d"})",
                                R"({"settingDBId":"orliaLocale","to":"{}\u0000"})"}) {
        ask(std::string(R"({"type":24,"timestamp":1,"payload":)") + payload + "}\n" + getRequest("[]"));
        EXPECT_EQ(get("orliaLocale"), R"(["en-US"])") << payload;
    }
    ask(R"({"type":24,"timestamp":1,"payload":{"settingDBId":"orliaLocale","to":"{}"},"payload":{}})"
        "\n" +
        getRequest("[]"));
    EXPECT_EQ(get("deviceName"), "TV");
}

TEST_F(HostGuard, RejectsLocalesOnTheDeviceSocket) {
    start();
    for (const auto& text : texts()) {
        const std::string answer =
            device(R"({"command":"setting","key":"orliaLocale","value":)" + json(text.value) + "}");
        EXPECT_EQ(contains(answer, "not-passed-on"), text.rejected) << text.name << " " << answer;
    }
    EXPECT_EQ(get("orliaLocale"), R"(["fr-FR"])");
}

TEST_F(HostGuard, SetsStoredLocalesOfOlderVersionsAside) {
    start();
    stop();
    std::vector<Text> stored = texts();
    // Too large for a frame, but a database may hold them.
    stored.push_back({"200,000 brackets", std::string(100000, '[') + std::string(100000, ']'), true});
    stored.push_back({"200,000 open brackets", std::string(200000, '['), false});
    for (const auto& text : stored) {
        SCOPED_TRACE(text.name);
        sqlite3* connection = nullptr;
        ASSERT_EQ(sqlite3_open(database().c_str(), &connection), SQLITE_OK);
        sqlite3_exec(connection, "DELETE FROM settings; DELETE FROM simulation", nullptr, nullptr, nullptr);
        sqlite3_stmt* insert = nullptr;
        sqlite3_prepare_v2(connection, "INSERT INTO settings VALUES ('orliaLocale', ?1)", -1, &insert, nullptr);
        sqlite3_bind_text64(insert, 1, text.value.data(), text.value.size(), SQLITE_STATIC, SQLITE_UTF8);
        EXPECT_EQ(sqlite3_step(insert), SQLITE_DONE);
        sqlite3_finalize(insert);
        sqlite3_close(connection);

        // The second start finds the value that the first one set aside.
        for (int round = 0; round < 2; ++round) {
            start();
            const std::string log = stop();
            EXPECT_EQ(contains(log, "it is now under 'orliaLocale.unusable'"), text.rejected && round == 0) << log;
        }
        const std::string key = text.rejected ? "orliaLocale.unusable" : "orliaLocale";
        const bool migrated = text.name == std::string("array") || text.name == std::string("array before a NUL");
        EXPECT_EQ(sql("SELECT length(CAST(value AS BLOB)) FROM settings WHERE key='" + key + "'"),
                  migrated ? "" : std::to_string(text.value.size()));
    }
}

}  // namespace SystemTests
