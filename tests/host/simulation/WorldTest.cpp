#include <fstream>

#include <gtest/gtest.h>

#include "SettingsHandlerTesting/Journal.h"
#include "SettingsHandlerTesting/kit/FakeValueObserver.h"
#include "Utils/Rapidjson.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "simulation/World.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHost {

using SettingsHandlerKit::Storage;

namespace {

/// With one value of each kind, and one fault of each kind that can be on.
const std::string whole = R"({"world":1,)"
                          R"("settings":{"deviceName":"Den","captionsFontSize":"FONT_LARGE","friendlyName":"Telly"},)"
                          R"("sdk":{"orliaLocale":"[\"fr-FR\",\"en-US\"]","captionsEnabled":"true",)"
                          R"("doNotDisturbEnabled":"false","timezone":"Europe/Paris"},)"
                          R"("device":{"handsFreeEnabled":"true","handsFreeAlwaysOnEnabled":"false",)"
                          R"("pttAlwaysOnEnabled":"true"},)"
                          R"("faults":{"storage-full":true,"storage-slow":20,"sdk-refuses":"timezone"}})";

std::string problemOf(const std::string& text) {
    try {
        worldOf(text);
        return "";
    } catch (const WorldError& error) {
        return error.what();
    }
}

/// A host's storage and simulation on a database.
struct Host {
    explicit Host(const std::string& file,
                  std::shared_ptr<SettingsHandlerKit::Disk> disk = std::make_shared<SettingsHandlerKit::Disk>())
        : storage(file, std::move(disk)) {}

    /// As a host that starts with a world.
    void store(const std::string& text) { storeWorld(worldOf(text), storage, *state); }

    std::string saved(const Faults& faults, bool withValues) {
        const auto values = std::make_shared<SettingsHandlerTesting::FakeValueObserver>(journal);
        const auto device = std::make_shared<SimulatedDevice>(*state, values);
        SimulatedSdkBridge sdk(*state, storage, device, values);
        return worldFrame(currentWorld(storage, sdk, *device, faults), withValues);
    }

    SettingsHandlerTesting::Journal journal;
    Storage storage;
    std::unique_ptr<SettingsHandlerKit::StateStore> state = storage.state("simulation");
};

}  // namespace

class WorldTest : public ::testing::Test {
protected:
    std::string errorOfStoring(Host& host, const std::string& text) {
        try {
            host.store(text);
            return "";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder;
};

TEST_F(WorldTest, IsSavedAsItWasRead) {
    const World world = worldOf(whole);
    Faults faults;
    for (const auto& [fault, value] : world.faults) {
        faults.switchOn(fault, value);
    }
    Host host(folder / "s.db");
    host.store(whole);
    EXPECT_EQ(host.saved(faults, true), R"({"world":)" + whole + R"(,"leftOut":[]})");
}

TEST_F(WorldTest, LeavesPersonalValuesOut) {
    Host host(folder / "s.db");
    host.store(R"({"world":1,"settings":{"deviceName":"Den","companionDevice":"[]","captionsFontSize":"FONT_LARGE",)"
               R"("tovanEntitlementStatus":"entitled"}})");
    const std::string rest =
        R"("sdk":{"orliaLocale":"[\"en-US\"]","captionsEnabled":"false","doNotDisturbEnabled":"false",)"
        R"("timezone":"America/Vancouver"},"device":{"handsFreeEnabled":"false","handsFreeAlwaysOnEnabled":"false",)"
        R"("pttAlwaysOnEnabled":"false"},"faults":{}},"leftOut":["deviceName","companionDevice",)"
        R"("tovanEntitlementStatus"]})";
    EXPECT_EQ(host.saved(Faults(), false),
              R"({"world":{"world":1,"settings":{"captionsFontSize":"FONT_LARGE"},)" + rest);
}

TEST_F(WorldTest, NeedsItsVersionAlone) {
    EXPECT_EQ(problemOf(R"({"world":1})"), "");
    EXPECT_EQ(problemOf(whole), "");
    const World locales = worldOf(R"({"world":1,"sdk":{"orliaLocale":"[ \"a\" , \"b\" ]"}})");
    EXPECT_EQ(locales.values.at("orliaLocale"), R"(["a","b"])") << "as the voice SDK keeps it";
}

TEST_F(WorldTest, StoresWhatOlderSoftwareLeft) {
    Host host(folder / "s.db");
    host.store(R"({"world":1,"legacy":{"timezone":"Europe/Paris","orliaLocale":"fr-FR"}})");
    std::string value;
    host.storage.getValue("timezone", value);
    EXPECT_EQ(value, "Europe/Paris");
    host.storage.getValue("orliaLocale", value);
    EXPECT_EQ(value, "fr-FR");
    EXPECT_EQ(host.saved(Faults(), true).find("legacy"), std::string::npos);
}

TEST_F(WorldTest, SaysWhichMemberIsWrong) {
    const std::vector<std::pair<std::string, std::string>> wrong{
        {"", "/: is not JSON at byte 0"},
        {R"({"world":1,})", "/: is not JSON at byte 11"},
        {"{\"world\":1,\"settings\":{\"deviceName\":\"\xff\"}}", "/: is not JSON at byte 37"},
        {"[]", "/: must be an object"},
        {"{}", "/world: is missing"},
        {R"({"world":2})", "/world: must be 1, the version of the format"},
        {R"({"world":"1"})", "/world: must be 1, the version of the format"},
        {R"({"world":1,"world":1})", "/world: appears twice"},
        {R"({"world":1,"device":[]})", "/device: must be an object"},
        {R"({"world":1,"clock":{}})", "/clock: is not a member of a world"},
        {R"({"world":1,"settings":{"noSuchKey":"x"}})", "/settings/noSuchKey: the catalogue has no such setting"},
        {R"({"world":1,"settings":{"timezone":"UTC"}})", R"(/settings/timezone: belongs in "sdk")"},
        {R"({"world":1,"sdk":{"handsFreeEnabled":"true"}})", R"(/sdk/handsFreeEnabled: belongs in "device")"},
        {R"({"world":1,"device":{"friendlyName":"x"}})", R"(/device/friendlyName: belongs in "settings")"},
        {R"({"world":1,"settings":{"deviceName":5}})", "/settings/deviceName: must be a string"},
        {R"({"world":1,"legacy":{"deviceName":"x"}})", "/legacy/deviceName: is not a setting that is migrated"},
        {R"({"world":1,"legacy":{"timezone":""}})", "/legacy/timezone: must be a string that is not empty"},
        {R"({"world":1,"settings":{"deviceName":""}})", "/settings/deviceName: must not be empty"},
        {R"({"world":1,"settings":{"deviceName":"a","deviceName":"a"}})", "/settings/deviceName: appears twice"},
        {R"({"world":1,"settings":{"deviceName":")" + std::string(65537, 'x') + R"("}})",
         "/settings/deviceName: is longer than 65536 bytes"},
        {R"({"world":1,"sdk":{"captionsEnabled":true}})", "/sdk/captionsEnabled: must be a string"},
        {R"({"world":1,"sdk":{"captionsEnabled":"on"}})", R"(/sdk/captionsEnabled: must be "true" or "false")"},
        {R"({"world":1,"sdk":{"orliaLocale":"fr-FR"}})",
         R"(/sdk/orliaLocale: must be the text of a JSON array with at least one locale, such as "[\"en-US\"]")"},
        {R"({"world":1,"faults":{"fire":true}})", "/faults/fire: no fault has this name"},
        {R"({"world":1,"faults":{"restart":true}})", "/faults/restart: happens once and cannot be on in a world"},
        {R"({"world":1,"faults":{"sdk-changes":"timezone"}})",
         "/faults/sdk-changes: happens once and cannot be on in a world"},
        {R"({"world":1,"faults":{"storage-full":false}})", "/faults/storage-full: must be true"},
        {R"({"world":1,"faults":{"storage-slow":true}})",
         "/faults/storage-slow: the value of storage-slow must be a number of milliseconds from 1 to 60000"},
        {R"({"world":1,"faults":{"storage-slow":0}})",
         "/faults/storage-slow: the value of storage-slow must be a number of milliseconds from 1 to 60000"},
    };
    for (const auto& [text, problem] : wrong) {
        EXPECT_EQ(problemOf(text), problem) << text.substr(0, 100);
    }
}

TEST_F(WorldTest, NamesTheFileThatIsWrong) {
    const auto problemOfFile = [](const std::string& file) -> std::string {
        try {
            worldIn(file);
            return "";
        } catch (const WorldError& error) {
            return error.what();
        }
    };
    const std::string file = folder / "w.json";
    EXPECT_EQ(problemOfFile(file), file + ": No such file or directory");
    std::ofstream(file) << "{}";
    EXPECT_EQ(problemOfFile(file), file + ": /world: is missing");
    EXPECT_EQ(problemOfFile(folder.path()), folder.path().string() + ": Is a directory");
}

TEST_F(WorldTest, IsStoredOnlyWhereThereAreNoValues) {
    for (const auto* const first :
         {R"({"world":1,"settings":{"deviceName":"Den"}})", R"({"world":1,"sdk":{"timezone":"UTC"}})",
          R"({"world":1,"device":{"pttAlwaysOnEnabled":"false"}})"}) {
        TestSupport::TemporaryDirectory own;
        Host host(own / "s.db");
        host.store(R"({"world":1,"faults":{"storage-full":true}})");
        host.store(first);
        const std::string before = host.saved(Faults(), true);
        EXPECT_EQ(errorOfStoring(host, whole), (own / "s.db") + " has values already; --world needs a new database");
        EXPECT_EQ(host.saved(Faults(), true), before);
    }
}

TEST_F(WorldTest, IsStoredWholeOrNotAtAll) {
    const auto disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    Host host(folder / "s.db", disk);
    const std::string before = host.saved(Faults(), true);
    for (long number = 1;; ++number) {
        disk->failOnce(number);
        const std::string error = errorOfStoring(host, whole);
        const bool hasFailed = disk->hasFailed();
        disk->work();
        if (!hasFailed) {
            EXPECT_EQ(error, "");
            break;
        }
        EXPECT_EQ(error, "the world could not be stored in " + (folder / "s.db"));
        ASSERT_EQ(host.saved(Faults(), true), before) << "call " << number;
    }
}

}  // namespace SettingsHost
