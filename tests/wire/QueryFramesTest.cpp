#include <gtest/gtest.h>

#include "Wire/Catalogue.h"
#include "Wire/QueryFrames.h"
#include "wire/Json.h"

using namespace Wire;

TEST(QueryFrames, HelloTellsOfResumingOnlyWhoAsked) {
    HelloReply hello{"5a5a", 42, std::nullopt, std::nullopt};
    EXPECT_EQ(helloFrame("h1", hello), R"({"messageId":"h1","hello":{"version":"1.1.0","run":"5a5a","sequence":42}})");
    hello.missed = true;
    EXPECT_EQ(helloFrame("h1", hello),
              R"({"messageId":"h1","hello":{"version":"1.1.0","run":"5a5a","sequence":42,"missed":true}})");
    hello.missed = false;
    hello.reread = std::set<std::string>{"timezone", "captionsEnabled"};
    EXPECT_EQ(helloFrame("h1", hello),
              R"({"messageId":"h1","hello":{"version":"1.1.0","run":"5a5a","sequence":42,"missed":false,)"
              R"("reread":["captionsEnabled","timezone"]}})");
}

TEST(QueryFrames, HistoryHoldsEventsAsTheyWereSent) {
    const auto event = [](const char* text) { return std::make_shared<const std::string>(text); };
    EXPECT_EQ(historyFrame("y\n1", {}), R"({"messageId":"y\n1","history":{"events":[]}})");
    EXPECT_EQ(historyFrame("y1", {event(R"({"type":25})")}),
              R"({"messageId":"y1","history":{"events":[{"type":25}]}})");
    EXPECT_EQ(historyFrame("y1", {event(R"({"a":1})"), event("{}"), event(R"({"b":2})")}),
              R"({"messageId":"y1","history":{"events":[{"a":1},{},{"b":2}]}})");
}

TEST(QueryFrames, CatalogueIsTheFileOnOneLine) {
    const auto frame = catalogueFrame("c1");
    EXPECT_EQ(frame.find('\n'), std::string::npos);
    const std::string start = R"({"messageId":"c1","catalogue":)";
    ASSERT_EQ(frame.substr(0, start.size()), start);
    EXPECT_EQ(WireTests::parsed(frame.substr(start.size(), frame.size() - start.size() - 1)),
              WireTests::parsed(std::string(catalogueText())));
}

TEST(QueryFrames, RepliesOfTheAdministrationAreObjectsOfStrings) {
    EXPECT_EQ(queryReplyFrame("a1", "page", {}), R"({"messageId":"a1","page":{}})");
    EXPECT_EQ(queryReplyFrame("a2", "backup", {{"file", "/a\"b"}}), R"({"messageId":"a2","backup":{"file":"/a\"b"}})");
}

TEST(QueryFrames, StatusHoldsTheHealthReport) {
    StatusReply status;
    status.health = R"({"status":"ok"})";
    status.hostVersion = "1.2.3";
    status.now = 1700000000001;
    EXPECT_EQ(statusFrame("a3", status),
              R"({"messageId":"a3","status":{"health":{"status":"ok"},"versions":{"host":"1.2.3","wire":"1.1.0"},)"
              R"("newest":{},"now":1700000000001}})");
    status.disk = StatusReply::Disk{1, 18446744073709551615U};
    status.newest = {{"", -1}, {"deviceName", 1700000000000}};
    EXPECT_EQ(statusFrame("a3", status),
              R"({"messageId":"a3","status":{"health":{"status":"ok"},"versions":{"host":"1.2.3","wire":"1.1.0"},)"
              R"("disk":{"free":1,"total":18446744073709551615},"newest":{"":-1,"deviceName":1700000000000},)"
              R"("now":1700000000001}})");
}
