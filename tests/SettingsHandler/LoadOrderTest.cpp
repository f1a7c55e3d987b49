#include <gtest/gtest.h>

#include "Constants.h"
#include "Logging.h"
#include "SettingsHandler/SettingsNames.h"
#include "SettingsHandlerTesting/platform/PlatformDoubles.h"

namespace {

/// What was built when a singleton was requested.
struct Built {
    std::size_t names = 0;
    std::size_t keys = 0;
    std::size_t defaults = 0;
    std::string firstConstant;
    std::string lastConstant;
    std::string tag;
};

std::vector<Built>& snapshots() {
    static std::vector<Built> instance;
    return instance;
}

}  // namespace

namespace SettingsHandlerTesting {

void onSingletonRequest(const char* /*which*/) {
    snapshots().push_back({SettingsHandler::stringToSettingsNamesTypeMapping.size(),
                           SettingsHandler::SettingsNamesTypeToStringMapping.size(),
                           SettingsHandler::SettingsNamesTypeToDefaultValuesMapping.size(),
                           SettingsHandler::Constants::settings, SettingsHandler::Constants::metricAttribute,
                           SettingsHandler::logTag});
}

}  // namespace SettingsHandlerTesting

TEST(LoadOrder, EachSingletonIsRequestedOnceTheLoggerFirst) {
    EXPECT_EQ(SettingsHandlerTesting::singletonRequests(),
              (std::vector<std::string>{"Log::instance", "MetricsCache::instance"}));
}

TEST(LoadOrder, TablesAndConstantsAreBuiltBefore) {
    ASSERT_EQ(snapshots().size(), 2U);
    for (const auto& built : snapshots()) {
        EXPECT_GT(built.names, 0U);
        EXPECT_EQ(built.names, SettingsHandler::stringToSettingsNamesTypeMapping.size());
        EXPECT_EQ(built.keys, SettingsHandler::SettingsNamesTypeToStringMapping.size());
        EXPECT_EQ(built.defaults, SettingsHandler::SettingsNamesTypeToDefaultValuesMapping.size());
        EXPECT_EQ(built.firstConstant, "settings");
        EXPECT_EQ(built.lastConstant, "interaction_name");
        EXPECT_EQ(built.tag, "SettingsHandler");
    }
}
