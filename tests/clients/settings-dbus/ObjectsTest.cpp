#include <cctype>
#include <fstream>
#include <set>
#include <sstream>

#include "Fixture.h"
#include "Wire/Catalogue.h"

using namespace SettingsDbusTests;

namespace {

class DbusObjects : public Fixture {
protected:
    void SetUp() override { startAll(); }

    Finished gdbus(const Words& arguments) const { return TestSupport::run(Words{"gdbus"} + arguments, environment()); }
};

std::string propertyOf(const Wire::SettingDescription& setting) {
    return static_cast<char>(std::toupper(setting.key.front())) + setting.key.substr(1);
}

std::string objectOf(const Wire::SettingDescription& setting) {
    return setting.personal ? personalObject : mainObject;
}

/// The type of the property, and a value as busctl takes and prints it.
Words exampleFor(const Wire::SettingDescription& setting) {
    switch (setting.kind) {
        case Wire::SettingKind::SWITCH:
            return {"b", "true"};
        case Wire::SettingKind::LOCALES:
            return {"as", "2", "\"fr-FR\"", "\"de-DE\""};
        case Wire::SettingKind::LIST:
            return {"as", "2", R"("a \" phone")", R"("")"};
        case Wire::SettingKind::CHOICE:
            return {"s", '"' + setting.values.back() + '"'};
        case Wire::SettingKind::TIMEZONE:
            return {"s", "\"Asia/Tokyo\""};
        default:
            return {"s", "\"Kitchen, 2\""};
    }
}

std::string joined(const Words& words) {
    std::string line = words.front();
    for (std::size_t number = 1; number < words.size(); ++number) {
        line += " " + words[number];
    }
    return line;
}

/// What busctl takes for what it prints.
Words unquoted(Words words) {
    for (auto& word : words) {
        if (word.front() == '"') {
            word = word.substr(1, word.size() - 2);
            if (const auto escape = word.find('\\'); escape != std::string::npos) {
                word.erase(escape, 1);
            }
        }
    }
    return words;
}

}  // namespace

TEST_F(DbusObjects, HaveAPropertyForEachSettingOfTheCatalogue) {
    for (const std::string object : {mainObject, personalObject}) {
        std::set<std::string> expected;
        for (const auto& setting : Wire::catalogue()) {
            if (objectOf(setting) == object) {
                expected.insert("." + propertyOf(setting) + " property " + exampleFor(setting).front() +
                                (setting.setByDeviceOnly ? " emits-change" : " emits-change writable"));
            }
        }
        std::istringstream table(busctl({"introspect", busName, object, busName}).output);
        std::set<std::string> found;
        for (std::string line; std::getline(table, line);) {
            std::istringstream words(line);
            std::string name, type, signature;
            words >> name >> type >> signature;
            if (type == "property") {
                std::string property = name;
                property += " property " + signature + " emits-change";
                found.insert(line.find(" writable") == std::string::npos ? property : property + " writable");
            }
        }
        EXPECT_EQ(found, expected) << object;
    }
}

TEST_F(DbusObjects, SetAndReadEveryProperty) {
    startMonitor();
    for (const auto& setting : Wire::catalogue()) {
        const Words example = exampleFor(setting);
        const std::string name = propertyOf(setting);
        const std::string said = set(Words{name} + unquoted(example), objectOf(setting));
        if (setting.setByDeviceOnly) {
            EXPECT_NE(said.find("only the device changes this setting"), std::string::npos) << said;
            continue;
        }
        EXPECT_EQ(said, "");
        EXPECT_EQ(get(name, objectOf(setting)), joined(example));
        const std::string changed = signals("PropertiesChanged", 1).front();
        EXPECT_EQ(changed.find("('org.settingshandler.Settings1', {'" + name + "': <"), 0U) << changed;
        EXPECT_EQ(signals("Changed", 1).front().find("('" + setting.key + "', "), 0U);
    }
}

TEST_F(DbusObjects, HaveTheValuesOfTheHost) {
    EXPECT_EQ(get("Timezone"), "s \"America/Vancouver\"");
    EXPECT_EQ(get("TovanEntitlementStatus", personalObject), "s \"\"");
    startMonitor();
    settingsctl({"device", "captions", "on"});
    EXPECT_EQ(signals("PropertiesChanged", 1).front(),
              "('org.settingshandler.Settings1', {'CaptionsEnabled': <true>}, @as [])");
    EXPECT_EQ(signals("Changed", 1).front(), "('captionsEnabled', 'false', 'true', uint64 0, '', '')");
    EXPECT_EQ(get("CaptionsEnabled"), "b true");
}

TEST_F(DbusObjects, WorkWithTheCacheOfAProxy) {
    ChildProcess proxy({PROXY_CACHE, "CaptionsFontSize"}, environment());
    EXPECT_EQ(proxy.output().readLine(), "'FONT_MEDIUM'");
    set({"CaptionsFontSize", "s", "FONT_LARGE"});
    EXPECT_EQ(proxy.output().readLine(), "'FONT_LARGE'");
    settingsctl({"set", "captionsFontSize", "FONT_SMALL"});
    EXPECT_EQ(proxy.output().readLine(), "'FONT_SMALL'");
    // When the service comes back the proxy reads everything again.
    bridge.reset();
    EXPECT_EQ(proxy.output().readLine(), "nothing");
    startBridge();
    while (proxy.output().readLine() != "'FONT_SMALL'") {
    }
}

TEST_F(DbusObjects, HaveAnInterfaceFromWhichProxiesAreGenerated) {
    std::ofstream(folder / "settings.xml") << busctl({"introspect", "--xml-interface", busName, mainObject}).output;
    std::ofstream(folder / "user.c") << R"(#include "proxy.h"
int main(void) {
    Settings1* settings = settings1_proxy_new_for_bus_sync(G_BUS_TYPE_SYSTEM, G_DBUS_PROXY_FLAGS_NONE,
        "org.settingshandler.Settings1", "/org/settingshandler/Settings1", NULL, NULL);
    gboolean isSet = settings1_call_set_sync(settings, "timezone", "Asia/Tokyo", NULL, NULL);
    g_print("%d %s %d\n", isSet, settings1_get_orlia_locale(settings)[0], settings1_get_captions_enabled(settings));
}
)";
    const std::string build = "cd '" + folder.path().string() +
                              "' && gdbus-codegen --generate-c-code proxy --interface-prefix org.settingshandler. "
                              "settings.xml && cc -w -o user user.c proxy.c $(pkg-config --cflags --libs gio-unix-2.0)";
    const auto user = TestSupport::run({"sh", "-c", build + " && ./user"}, environment(), std::chrono::minutes(5));
    EXPECT_EQ(user.output, "1 en-US 0\n") << user.errors;
    EXPECT_EQ(get("Timezone"), "s \"Asia/Tokyo\"");
}

TEST_F(DbusObjects, WorkWithGdbus) {
    const auto values = gdbus({"call", "--system", "--dest", busName, "--object-path", mainObject, "--method",
                               std::string(busName) + ".Get", "['timezone', 'captionsEnabled']"});
    EXPECT_EQ(values.output, "({'captionsEnabled': 'false', 'timezone': 'America/Vancouver'},)\n");
    const Words names{"--system", "--dest", busName, "--object-path", personalObject, "--method"};
    gdbus(Words{"call"} + names + Words{std::string(busName) + ".Set", "deviceName", "Küche"});
    const auto name =
        gdbus(Words{"call"} + names + Words{"org.freedesktop.DBus.Properties.Get", busName, "DeviceName"});
    EXPECT_EQ(name.output, "(<'Küche'>,)\n");
    const auto error = gdbus({"call", "--system", "--dest", busName, "--object-path", mainObject, "--method",
                              std::string(busName) + ".Set", "orliaLocale", "fr-FR"});
    EXPECT_EQ(
        error.errors,
        "Error: GDBus.Error:org.settingshandler.Error.WrongForm: must be a JSON array with at least one locale\n");
    EXPECT_EQ(error.status, 1);
}
