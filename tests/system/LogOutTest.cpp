#include <filesystem>

#include "HostFixture.h"

namespace SystemTests {

/// A log-out of the shipped program, inside its sandbox.
class HostLogOut : public HostTest {
protected:
    /// The files of the storage that hold `text`.
    Lines filesWith(const std::string& text) {
        Lines names;
        for (const auto& name : TestSupport::namesIn(folder / "state")) {
            if (contains(TestSupport::contentOf(folder.path() / "state" / name), text)) {
                names.push_back(name);
            }
        }
        return names;
    }
};

TEST_F(HostLogOut, ErasesValuesPermanentlyFromAllFiles) {
    start();
    set("deviceName", "\"SecretRoom\"");
    set("companionDevice", "\"SecretRoom\"");
    disconnect();
    stop();
    for (const auto* ending : {".backup.1", ".backup.2", ".damaged"}) {
        std::filesystem::copy_file(database(), database() + ending);
    }
    start();
    EXPECT_EQ(get("deviceName"), "SecretRoom");
    EXPECT_EQ(filesWith("SecretRoom"),
              (Lines{"settings.db", "settings.db.backup.1", "settings.db.backup.2", "settings.db.damaged"}));
    client().sendLine(R"({"type":22})");
    EXPECT_EQ(client().receiveLine(), R"({"notice":{"reread":["companionDevice","deviceName"]}})");
    EXPECT_EQ(filesWith("SecretRoom"), Lines());
    EXPECT_EQ(get("deviceName"), "TV");
    disconnect();
    const std::string log = stop();
    EXPECT_FALSE(contains(log, "a log-out is incomplete")) << log;
    EXPECT_EQ(filesWith("SQLite format 3"), (Lines{"settings.db", "settings.db.backup.1"})) << "a new backup was made";
    std::filesystem::remove(database());
    start();
    EXPECT_EQ(get("deviceName"), "TV");
    EXPECT_EQ(filesWith("SecretRoom"), Lines());
}

TEST_F(HostLogOut, EmptiesTheHistory) {
    start();
    set("deviceName", "\"SecretRoom\"");
    const std::string run = ask(R"({"messageId":"h","hello":{}})")["hello"]["run"].GetString();
    const auto history = [&] { return ask(R"({"messageId":"y","history":{}})")["history"]["events"].Size(); };
    const auto resumeAfter = [&](int sequence) {
        Lines events;
        const auto reply = ask(R"({"messageId":"h","hello":{"resume":{"run":")" + run + R"(","sequence":)" +
                                   std::to_string(sequence) + "}}}",
                               &events);
        EXPECT_EQ(events, Lines());
        return std::string(reply["hello"]["missed"].GetBool() ? "missed" : "complete");
    };
    EXPECT_EQ(history(), 1U);
    EXPECT_EQ(resumeAfter(1), "complete");
    EXPECT_STREQ(ask(R"({"type":22,"messageId":"o","answer":true})")["payload"]["outcome"].GetString(), "done");
    EXPECT_EQ(history(), 0U);
    EXPECT_EQ(resumeAfter(0), "missed");
    EXPECT_EQ(resumeAfter(1), "missed");
    set("deviceName", "\"Den\"", 2);
    EXPECT_EQ(history(), 1U);
    EXPECT_EQ(resumeAfter(1), "missed");
    EXPECT_EQ(resumeAfter(2), "complete");
}

}  // namespace SystemTests
