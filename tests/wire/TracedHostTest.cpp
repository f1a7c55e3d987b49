#include <string>

#include <gtest/gtest.h>

#include "wire/Json.h"
#include "wire/TracedHost.h"

namespace WireTests {

namespace {

std::string copyOf(const std::string& direction, const std::string& listener, const std::string& text) {
    json::StringBuffer buffer;
    json::Writer<json::StringBuffer> writer(buffer);
    writer.String(text);
    return R"({"trace":{"timestamp":1,"direction":")" + direction + R"(","door":")" + listener +
           R"(","client":null,"text":)" + buffer.GetString() + "}}";
}

/// Whether the check finds a fault in each of some copies.
std::string faultsIn(const std::vector<std::string>& copies) {
    TraceCheck check;
    std::string faults;
    for (const auto& copy : copies) {
        faults += check.faultOf(copy) ? 'x' : '.';
    }
    return faults;
}

const std::string done = R"({"ok":true})";
const std::string refusal = R"({"error":{"code":"bad-argument","message":"no"}})";
const std::string withoutValue = R"({"command":"locale","value":""})";

}  // namespace

TEST(TraceCheck, ChecksFramesOfTheHost) {
    EXPECT_EQ(faultsIn({copyOf("out", "all", R"({"notice":{"reread":["a"]}})"), copyOf("out", "device", done)}), "..");
    EXPECT_EQ(faultsIn({copyOf("out", "all", R"({"notice":{"reread":[]}})"), copyOf("out", "socket", done),
                        copyOf("out", "page", "x"), copyOf("sideways", "all", done)}),
              "xxxx");
}

TEST(TraceCheck, ChecksRequestsOfAKnownKind) {
    EXPECT_EQ(faultsIn({copyOf("in", "socket", R"({"type":18,"messageId":"1"})"), copyOf("in", "page", "hello"),
                        copyOf("in", "socket", R"({"type":8})"), copyOf("in", "device", "{}")}),
              "....");
    EXPECT_EQ(
        faultsIn({copyOf("in", "socket", R"({"type":18})"), copyOf("in", "page", R"({"type":7,"messageId":"1"})")}),
        "xx");
}

TEST(TraceCheck, LetsTheDeviceRefuseACommand) {
    EXPECT_EQ(faultsIn({copyOf("in", "device", withoutValue), copyOf("out", "device", refusal)}), "..");
    EXPECT_EQ(
        faultsIn({copyOf("in", "device", withoutValue), copyOf("out", "device", done), copyOf("out", "device", done)}),
        ".x.");
}

}  // namespace WireTests
