#include "server/web/WebAccess.h"

namespace SettingsHandlerKit {

namespace {

WebVisitor visitor(const std::string& host) {
    WebVisitor visitor;
    visitor.host = host;
    return visitor;
}

WebVisitor fromOrigin(const std::string& origin) {
    WebVisitor visitor;
    visitor.host = "localhost:8097";
    visitor.origin = origin;
    return visitor;
}

WebVisitor withKey(const std::string& key) {
    WebVisitor visitor;
    visitor.key = key;
    return visitor;
}

WebVisitor withCookies(const std::string& cookies) {
    WebVisitor visitor;
    visitor.cookies = cookies;
    return visitor;
}

}  // namespace

class WebAccessTest : public ::testing::Test {
protected:
    std::int64_t now = 1700000000;
    WebAccess access{parseWebAddress("127.0.0.1:8097"), "http://localhost:5173", "thekey", "thesecret",
                     [this] { return now; }};
    const std::string cookie = CookieSigner("thesecret").issue(now);
};

TEST_F(WebAccessTest, AllowsOnlyItsOwnHosts) {
    for (const auto* good : {"127.0.0.1:8097", "localhost:8097", "LocalHost:8097"}) {
        EXPECT_TRUE(access.isFromHere(visitor(good))) << good;
    }
    for (const auto* bad : {"", "localhost", "127.0.0.1", "127.0.0.1:80", "127.0.0.2:8097", "[::1]:8097",
                            "rebound.example:8097", "localhost:8097.example", "127.0.0.1:8097 "}) {
        EXPECT_FALSE(access.isFromHere(visitor(bad))) << bad;
    }
    EXPECT_FALSE(access.isFromHere(WebVisitor()));
}

TEST_F(WebAccessTest, AllowsOnlyItsOwnOriginsAndTheAllowedOne) {
    for (const auto* good : {"http://127.0.0.1:8097", "http://localhost:8097", "http://localhost:5173"}) {
        EXPECT_TRUE(access.isFromHere(fromOrigin(good))) << good;
    }
    for (const auto* bad : {"", "null", "https://localhost:8097", "http://localhost", "http://localhost:5174",
                            "http://localhost:8097.example", "http://example"}) {
        EXPECT_FALSE(access.isFromHere(fromOrigin(bad))) << bad;
    }
    const WebAccess strict(parseWebAddress("127.0.0.1:8097"), "", "k", "c", [] { return 0; });
    EXPECT_FALSE(strict.isFromHere(fromOrigin("http://localhost:5173")));
    EXPECT_FALSE(strict.isFromHere(fromOrigin("")));
}

TEST_F(WebAccessTest, TheAllowedOriginMayBeWrittenWithCapitals) {
    const WebAccess loud(parseWebAddress("127.0.0.1:8097"), "HTTP://LocalHost:5173", "k", "s", [] { return 0; });
    EXPECT_TRUE(loud.isFromHere(fromOrigin("http://localhost:5173"))) << "as browsers write it";
    EXPECT_TRUE(loud.isFromHere(fromOrigin("HTTP://LocalHost:5173")));
    EXPECT_FALSE(loud.isFromHere(fromOrigin("http://localhost:5174")));
}

TEST_F(WebAccessTest, KnowsTheNamesOfOtherAddresses) {
    const WebAccess version6(parseWebAddress("[::1]:9000"), "", "k", "c", [] { return 0; });
    EXPECT_TRUE(version6.isFromHere(visitor("[::1]:9000")));
    EXPECT_TRUE(version6.isFromHere(visitor("localhost:9000")));
    EXPECT_FALSE(version6.isFromHere(visitor("127.0.0.1:9000")));
    const WebAccess usual(parseWebAddress("127.0.0.1:80"), "", "k", "c", [] { return 0; });
    EXPECT_TRUE(usual.isFromHere(visitor("127.0.0.1")));
    EXPECT_TRUE(usual.isFromHere(visitor("localhost:80")));
}

TEST_F(WebAccessTest, AdmitsVisitorsWithKeyOrCookie) {
    EXPECT_TRUE(access.isAdmitted(withKey("thekey")));
    EXPECT_TRUE(access.isAdmitted(withCookies("settings-8097=" + cookie)));
    EXPECT_TRUE(access.isAdmitted(withCookies("a=b; settings-8097=" + cookie + "; c=d")));
    EXPECT_TRUE(access.isAdmitted(withCookies("settings-8097=old; settings-8097=" + cookie)));
    EXPECT_FALSE(access.isAdmitted(WebVisitor()));
    for (const auto* bad : {"", "thekex", "thekeyy", "theke", "thesecret"}) {
        EXPECT_FALSE(access.isAdmitted(withKey(bad))) << bad;
    }
    const std::string name = "settings-8097=";
    for (const std::string& bad : {std::string(), std::string(";"), std::string("="), std::string("settings-8097"),
                                   name, name + "thekey", name + "thesecret", "settings-8098=" + cookie,
                                   "x" + name + cookie, name + cookie + "2", "a=" + name + cookie}) {
        EXPECT_FALSE(access.isAdmitted(withCookies(bad))) << bad;
    }
}

TEST_F(WebAccessTest, GivesTheCookieForTheKeyAlone) {
    EXPECT_EQ(access.cookieFor(withKey("thekey")),
              "settings-8097=" + cookie + "; Path=/; HttpOnly; SameSite=Strict; Max-Age=2592000");
    EXPECT_EQ(access.cookieFor(withKey("other")), "");
    EXPECT_EQ(access.cookieFor(withCookies("settings-8097=" + cookie)), "") << "it is not renewed";
}

TEST_F(WebAccessTest, ACookieIsValidForThirtyDaysAndAKeyUntilItIsReplaced) {
    const WebVisitor returning = withCookies("settings-8097=" + cookie);
    constexpr std::int64_t day = std::int64_t{24} * 60 * 60;
    now += 30 * day - 1;
    EXPECT_TRUE(access.isAdmitted(returning));
    ++now;
    EXPECT_FALSE(access.isAdmitted(returning));
    EXPECT_TRUE(access.isAdmitted(withKey("thekey")));
    EXPECT_NE(access.cookieFor(withKey("thekey")).find(CookieSigner("thesecret").issue(now)), std::string::npos);
}

TEST_F(WebAccessTest, ANewKeyInvalidatesTheOldOneAndItsCookies) {
    access.replace("newkey", "newsecret");
    EXPECT_FALSE(access.isAdmitted(withKey("thekey")));
    EXPECT_FALSE(access.isAdmitted(withCookies("settings-8097=" + cookie)));
    EXPECT_EQ(access.cookieFor(withKey("thekey")), "");
    EXPECT_TRUE(access.isAdmitted(withKey("newkey")));
    EXPECT_TRUE(access.isAdmitted(withCookies("settings-8097=" + CookieSigner("newsecret").issue(now))));
}

TEST(OriginTest, IsSchemeHostAndPort) {
    for (const auto* good : {"http://localhost:5173", "https://pages.example", "http://[::1]:80", "http://[::1]",
                             "https://A-1.example:65535"}) {
        EXPECT_TRUE(isOrigin(good)) << good;
    }
    for (const auto* bad :
         {"",           "*",          "null",          "localhost:5173",  "http://",      "http://a/",
          "http://a:b", "ftp://a",    "http://user@a", "http://a:5173?x", "https://",     "https:/a",
          "http:///",   "http://:80", "http://a:",     "http://a:123456", "http://a:1:2", "http://a_b",
          "http://[",   "http://[]",  "http://[::1",   "http://[::1]a",   "http://[::g]", "http://[::1]]",
          "http://a]",  "HTTP://a",   " http://a"}) {
        EXPECT_FALSE(isOrigin(bad)) << bad;
    }
}

}  // namespace SettingsHandlerKit
