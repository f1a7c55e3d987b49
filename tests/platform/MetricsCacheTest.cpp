#include <gtest/gtest.h>

#include "DeviceAbstractionLayer/AppNameToStringMapping.h"
#include "Metrics/CachedLocale.h"
#include "Metrics/MetricsCache.h"

TEST(MetricsCache, RemembersTheLastLocale) {
    EXPECT_EQ(&Metrics::MetricsCache::instance(), &Metrics::MetricsCache::instance());
    EXPECT_EQ(Metrics::cachedOrliaLocale(), "");
    Metrics::MetricsCache::instance().setOrliaLocale("en-US");
    Metrics::MetricsCache::instance().setOrliaLocale("fr-FR");
    EXPECT_EQ(Metrics::cachedOrliaLocale(), "fr-FR");
}

TEST(AppNameToStringMapping, NamesTheSettingsApplication) {
    using DeviceAbstractionLayer::AppName;
    EXPECT_EQ(static_cast<int>(AppName::VA_SETTINGS_APP), 6);
    EXPECT_EQ(DeviceAbstractionLayer::AppNameToStringMapping.at(AppName::VA_SETTINGS_APP), "voice-assistant-settings");
}
