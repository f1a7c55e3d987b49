#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include "HandlerFixture.h"

namespace SettingsHandlerTests {

namespace {

using Cells = std::vector<std::string>;

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

Cells cellsOf(const std::string& line) {
    std::istringstream stream(line.substr(1));
    Cells cells;
    for (std::string cell; std::getline(stream, cell, '|');) {
        cells.push_back(trimmed(cell));
    }
    return cells;
}

/// The rows of the document's table that has this column.
std::vector<Cells> tableWith(const std::string& column) {
    std::ifstream document(SETTINGS_DOCUMENT);
    std::vector<Cells> rows;
    bool inTable = false;
    for (std::string line; std::getline(document, line);) {
        const bool isRow = line.rfind('|', 0) == 0;
        if (isRow && inTable && line.rfind("|---", 0) != 0) {
            rows.push_back(cellsOf(line));
        }
        if (isRow && !inTable) {
            const Cells head = cellsOf(line);
            inTable = std::find(head.begin(), head.end(), column) != head.end();
        }
        inTable = inTable && isRow;
    }
    return rows;
}

/// The text between the first two back quotes; the whole text when there are none.
std::string quoted(const std::string& text) {
    const std::size_t first = text.find('`');
    return first == std::string::npos ? text : text.substr(first + 1, text.find('`', first + 1) - first - 1);
}

bool startsWith(const std::string& text, const std::string& start) {
    return text.rfind(start, 0) == 0;
}

/// The calls of collaborators and observers among journal entries, without their arguments.
std::set<std::string> calls(const Entries& entries) {
    std::set<std::string> found;
    for (const auto& entry : entries) {
        if (!startsWith(entry, "log ")) {
            found.insert(entry.substr(0, entry.find('(')));
        }
    }
    return found;
}

/// The calls that report every change.
const std::set<std::string> reports{"transport.sendMessage", "metrics.recordCounter", "metrics.recordEvent"};

/// The calls that report this setting in addition, by the names in the document.
std::set<std::string> additionalReports(const std::string& cell) {
    static const std::map<std::string, std::string> words{
        {"metrics cache", "metricsCache.setOrliaLocale"},
        {"locale observers", "observer.orliaLocale"},
        {"friendly name observers", "observer.friendlyName"},
        {"entitlement status observers", "observer.entitlementStatus"}};
    std::set<std::string> found;
    std::istringstream stream(cell);
    for (std::string word; std::getline(stream, word, ',');) {
        found.insert(words.at(trimmed(word)));
    }
    return found;
}

std::set<std::string> operator+(std::set<std::string> one, const std::set<std::string>& other) {
    one.insert(other.begin(), other.end());
    return one;
}

/// The last row holds for all keys that no other names, outside the catalogue, too.
const std::string anyOtherKey = "aKeyOutsideTheCatalogue";

struct Route {
    explicit Route(const Cells& cells)
        : key(startsWith(cells[0], "`") ? quoted(cells[0]) : anyOtherKey),
          readFrom(cells[1]),
          writtenTo(cells[2]),
          comparedWith(cells[3]),
          additional(additionalReports(cells[4])),
          setBy(cells[5]) {}

    std::string key;
    std::string readFrom;
    std::string writtenTo;
    std::string comparedWith;
    std::set<std::string> additional;
    std::string setBy;
};

/// The call of an owner that reads or, from the storage, writes.
std::set<std::string> callOf(const std::string& owner, const std::string& ofStorage) {
    if (owner == "storage") {
        return {"storage." + ofStorage};
    }
    if (startsWith(owner, "device information `")) {
        return {"device.getDeviceInfo"};
    }
    return startsWith(owner, "voice SDK `") ? std::set<std::string>{"sdk." + quoted(owner)} : std::set<std::string>{};
}

}  // namespace

class SettingsReference : public HandlerTest {
protected:
    SettingsReference() {
        using namespace SettingsHandlerTesting;
        handler->addOrliaLocaleObserver(std::make_shared<FakeLocaleObserver>(journal));
        handler->addFriendlyNameObserver(std::make_shared<FakeFriendlyNameObserver>(journal));
        handler->addEntitlementStatusObserver(std::make_shared<FakeEntitlementObserver>(journal));
        journal.take();
    }

    void expectReading(const Route& route) {
        const bool atDevice = startsWith(route.readFrom, "device information");
        if (atDevice) {
            device->info = {{quoted(route.readFrom), "on"}};
        }
        journal.take();
        const Values values = handler->getSettings({route.key});
        EXPECT_EQ(calls(journal.take()), callOf(route.readFrom, "getValue"));
        EXPECT_TRUE(!atDevice || values.at(route.key) == "true") << "read from another entry of the device information";
    }

    void expectWriting(const Route& route, const std::string& value) {
        if (route.writtenTo.empty()) {
            EXPECT_EQ(route.setBy, "the device");
            EXPECT_FALSE(handler->setSetting(route.key, value));
            EXPECT_EQ(calls(journal.take()), std::set<std::string>{});
            return;
        }
        EXPECT_EQ(route.setBy, "anyone");
        const auto comparing = callOf(route.comparedWith, "");
        EXPECT_TRUE(handler->setSetting(route.key, value));
        EXPECT_EQ(calls(journal.take()), comparing + callOf(route.writtenTo, "setValue") + reports + route.additional);
        // The voice SDK and the cache now have the value.
        EXPECT_FALSE(handler->setSetting(route.key, value));
        EXPECT_EQ(calls(journal.take()), comparing);
        // The document says which of the two it is compared with.
        if (route.comparedWith == "cache") {
            cache(route.key, "known");
            EXPECT_FALSE(handler->setSetting(route.key, "known"));
            EXPECT_EQ(calls(journal.take()), std::set<std::string>{});
        }
    }
};

TEST_F(SettingsReference, DescribesWhereEverySettingIsReadWrittenAndAnnounced) {
    std::map<std::string, Route> routes;
    for (const auto& row : tableWith("written to")) {
        ASSERT_EQ(row.size(), 6U);
        const Route route(row);
        EXPECT_TRUE(routes.emplace(route.key, route).second) << route.key << " stands there twice";
    }
    for (const auto& [key, type] : ::SettingsHandler::stringToSettingsNamesTypeMapping) {
        Route other = routes.at(anyOtherKey);
        other.key = key;
        routes.emplace(key, other);
    }
    EXPECT_EQ(routes.size(), ::SettingsHandler::stringToSettingsNamesTypeMapping.size() + 1);
    for (const auto& [key, route] : routes) {
        SCOPED_TRACE(key);
        expectReading(route);
        expectWriting(route, key == "orliaLocale" ? R"(["fr-FR"])" : "new");
    }
}

}  // namespace SettingsHandlerTests
