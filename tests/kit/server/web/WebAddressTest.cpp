#include <stdexcept>

#include "server/web/WebAddress.h"

namespace SettingsHandlerKit {

TEST(WebAddressTest, ReadsLoopbackAddresses) {
    EXPECT_EQ(parseWebAddress("127.0.0.1:8097").text(), "127.0.0.1:8097");
    EXPECT_EQ(parseWebAddress("127.1.2.3:0").text(), "127.1.2.3:0");
    EXPECT_EQ(parseWebAddress("localhost:80").text(), "127.0.0.1:80");
    EXPECT_EQ(parseWebAddress("[::1]:65535").address, "::1");
    EXPECT_EQ(parseWebAddress("[::1]:65535").text(), "[::1]:65535");
}

TEST(WebAddressTest, RefusesEverythingElseWithAMessage) {
    const std::map<std::string, std::string> refusals{
        {"0.0.0.0:8097", "'0.0.0.0' is not a loopback address, such as 127.0.0.1"},
        {"192.168.1.2:8097", "'192.168.1.2' is not a loopback address, such as 127.0.0.1"},
        {"[::]:8097", "'::' is not a loopback address, such as 127.0.0.1"},
        {"[::ffff:127.0.0.1]:1", "'::ffff:127.0.0.1' is not a loopback address, such as 127.0.0.1"},
        {"example:80", "'example' is not a loopback address, such as 127.0.0.1"},
        {":80", "'' is not a loopback address, such as 127.0.0.1"},
        {"::1:80", "'::1' needs brackets, as in [::1]:8097"},
        {"127.0.0.1", "'127.0.0.1' lacks a port, as in 127.0.0.1:8097"},
        {"127.0.0.1:", "'' is not a port, a number from 0 to 65535"},
        {"127.0.0.1:65536", "'65536' is not a port, a number from 0 to 65535"},
        {"127.0.0.1:-1", "'-1' is not a port, a number from 0 to 65535"},
        {"127.0.0.1:000080", "'000080' is not a port, a number from 0 to 65535"},
    };
    for (const auto& [text, message] : refusals) {
        try {
            parseWebAddress(text);
            ADD_FAILURE() << text << " was taken";
        } catch (const std::invalid_argument& error) {
            EXPECT_EQ(error.what(), message);
        }
    }
}

}  // namespace SettingsHandlerKit
