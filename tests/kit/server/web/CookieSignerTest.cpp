#include <cstdint>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "server/web/WebAccess.h"

namespace {

/// How many bytes each call compared.
std::vector<std::size_t> compared;

}  // namespace

/// Takes the place of libcrypto's comparison, which does not stop at the first difference, and notes each call.
extern "C" int CRYPTO_memcmp(const void* left, const void* right, std::size_t size) {
    compared.push_back(size);
    using Comparison = int (*)(const void*, const void*, std::size_t);
    static const auto original = reinterpret_cast<Comparison>(::dlsym(RTLD_NEXT, "CRYPTO_memcmp"));
    return original(left, right, size);
}

namespace SettingsHandlerKit {

namespace {

constexpr std::int64_t issued = 1700000000;
constexpr std::int64_t day = std::int64_t{24} * 60 * 60;

}  // namespace

TEST(CookieSignerTest, SignsTheTimeOfIssue) {
    // By openssl: printf 1700000000 | openssl dgst -sha256 -hmac key
    EXPECT_EQ(CookieSigner("key").issue(issued),
              "1700000000.39ed3598c145f88463b7ba0b3161ab6563208d7c9c28d57603f8e1e1a565fb93");
}

TEST(CookieSignerTest, ACookieExpiresAfterThirtyDays) {
    const CookieSigner signer("secret");
    const std::string cookie = signer.issue(issued);
    EXPECT_TRUE(signer.isValid(cookie, issued));
    EXPECT_TRUE(signer.isValid(cookie, issued + 30 * day - 1));
    EXPECT_FALSE(signer.isValid(cookie, issued + 30 * day));
    EXPECT_FALSE(signer.isValid(cookie, issued + 3000 * day));
}

TEST(CookieSignerTest, ACookieMayBeADayAheadOfTheClockAndNoMore) {
    const CookieSigner signer("secret");
    const std::string cookie = signer.issue(issued);
    EXPECT_TRUE(signer.isValid(cookie, issued - day));
    EXPECT_FALSE(signer.isValid(cookie, issued - day - 1));
    EXPECT_FALSE(signer.isValid(cookie, 0));
    // By a clock before 1970.
    EXPECT_TRUE(signer.isValid(signer.issue(-5), 0));
}

TEST(CookieSignerTest, NothingElseIsValid) {
    const CookieSigner signer("secret");
    const std::string cookie = signer.issue(issued);
    const std::string signature = cookie.substr(cookie.find('.') + 1);
    for (const std::string& bad :
         {std::string(), std::string("."), std::string("1700000000"), std::string("1700000000."), signature,
          "." + signature, "1700000001." + signature, " " + cookie, cookie + "0", cookie.substr(0, cookie.size() - 1),
          "+" + cookie, CookieSigner("secret2").issue(issued), CookieSigner("").issue(issued)}) {
        EXPECT_FALSE(signer.isValid(bad, issued)) << bad;
    }
    std::string changed = cookie;
    changed.back() = changed.back() == '0' ? '1' : '0';
    EXPECT_FALSE(signer.isValid(changed, issued));
}

TEST(CookieSignerTest, SecretsAreComparedInConstantTime) {
    compared.clear();
    EXPECT_TRUE(isSameSecret("0123456789", "0123456789"));
    EXPECT_FALSE(isSameSecret("x123456789", "0123456789"));
    EXPECT_FALSE(isSameSecret("012345678x", "0123456789"));
    EXPECT_FALSE(isSameSecret("012345678", "0123456789"));
    EXPECT_EQ(compared, (std::vector<std::size_t>{10, 10, 10}));
    compared.clear();
    const CookieSigner signer("secret");
    const std::string cookie = signer.issue(issued);
    EXPECT_FALSE(signer.isValid("2" + cookie.substr(1), issued));
    EXPECT_EQ(compared, std::vector<std::size_t>{cookie.size()});
}

TEST(CookieSignerTest, TheKeyIsComparedInConstantTime) {
    const WebAccess access(parseWebAddress("127.0.0.1:8097"), "", "thekey", "secret", [] { return issued; });
    WebVisitor visitor;
    visitor.key = "xhekey";
    compared.clear();
    EXPECT_FALSE(access.isAdmitted(visitor));
    EXPECT_EQ(compared, std::vector<std::size_t>{6});
}

}  // namespace SettingsHandlerKit
