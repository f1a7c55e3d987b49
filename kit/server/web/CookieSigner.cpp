#include "server/web/CookieSigner.h"

#include <array>
#include <stdexcept>
#include <utility>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include "server/Hexadecimal.h"

namespace SettingsHandlerKit {

namespace {

/// Between the time of issue and its signature.
constexpr char separator = '.';

}  // namespace

bool isSameSecret(const std::string& left, const std::string& right) {
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

CookieSigner::CookieSigner(std::string secretToSignWith) : secret(std::move(secretToSignWith)) {
    // Its configuration file is not needed, and the sandbox does not allow to read it.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
}

std::string CookieSigner::signatureOf(const std::string& text) const {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    if (HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()),
             reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest.data(), &size) == nullptr) {
        throw std::runtime_error("cannot sign a cookie");
    }
    return hexadecimal(digest.data(), size);
}

std::string CookieSigner::issue(std::int64_t now) const {
    const std::string time = std::to_string(now);
    return time + separator + signatureOf(time);
}

bool CookieSigner::isValid(const std::string& value, std::int64_t now) const {
    const std::string time = value.substr(0, value.find(separator));
    if (!isSameSecret(value, time + separator + signatureOf(time))) {
        return false;
    }
    // The signature is valid, so it is a number.
    const std::int64_t age = now - std::stoll(time);
    return -tolerance.count() <= age && age < lifetime.count();
}

}  // namespace SettingsHandlerKit
