#include "LogRecording.h"
#include "metrics/ChangeCounter.h"

namespace SettingsHost {

TEST(ChangeCounterTest, CountsBySettingAndDropsTheValues) {
    SettingsHostTests::LogRecording log;
    ChangeCounter counter;
    counter.recordCounter("deviceName_Living room", 0, 1, 1.0);
    counter.recordCounter("deviceName_under_scored", 0, 1, 1.0);
    counter.recordCounter("friendlyName_", 0, 1, 1.0);
    counter.recordEvent("app_events", "AUTO", {{"interaction_name", "deviceName_x"}});
    EXPECT_EQ(counter.counts(), (std::map<std::string, unsigned long>{{"deviceName", 2}, {"friendlyName", 1}}));
    EXPECT_EQ(log.take(), (std::vector<std::string>{"0 settings-host:changes of 'deviceName': 1",
                                                    "0 settings-host:changes of 'deviceName': 2",
                                                    "0 settings-host:changes of 'friendlyName': 1"}));
}

TEST(ChangeCounterTest, CountsUnknownSettingsTogether) {
    SettingsHostTests::LogRecording log;
    ChangeCounter counter;
    for (int number = 0; number < 10000; ++number) {
        counter.recordCounter("secret " + std::to_string(number) + "_value", 0, 1, 1.0);
    }
    EXPECT_EQ(counter.counts(), (std::map<std::string, unsigned long>{{"other", 10000}}));
}

}  // namespace SettingsHost
