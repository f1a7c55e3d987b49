#pragma once

#include <string>

/// The requests that the benchmarks send.
namespace Benchmarks {

/// A SetSettings request as a page sends it. `value` must need no escapes in JSON.
inline std::string setRequest(const std::string& key, const std::string& value,
                              const std::string& timestamp = "1700000000000") {
    return R"({"type":24,"messageId":"m1","timestamp":)" + timestamp + R"(,"payload":{"settingDBId":")" + key +
           R"(","to":")" + value + "\"}}";
}

/// A GetSettings request. `names`: JSON strings divided by commas; empty asks for all.
inline std::string getRequest(const std::string& names) {
    return R"({"type":7,"messageId":"m1","timestamp":1700000000000,"payload":{"settings":[)" + names + "]}}";
}

}  // namespace Benchmarks
