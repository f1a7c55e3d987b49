#include "HealthReport.h"

namespace SettingsHost {

TEST(HealthReportTest, AnswersOnlyWhileTheHostServes) {
    HealthReport report("1.2.3");
    EXPECT_EQ(report.answer().status, 503U);
    EXPECT_EQ(*report.answer().body, R"({"status":"not-serving","version":"1.2.3","uptimeSeconds":0})");
    report.setServing(true);
    const HttpAnswer answer = report.answer();
    EXPECT_EQ(answer.status, 200U);
    EXPECT_EQ(answer.contentType, "application/json");
    EXPECT_EQ(*answer.body, R"({"status":"ok","version":"1.2.3","uptimeSeconds":0})");
    report.setServing(false);
    EXPECT_EQ(report.answer().status, 503U);
}

}  // namespace SettingsHost
