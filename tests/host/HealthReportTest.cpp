#include "HealthReport.h"

namespace SettingsHost {

TEST(HealthReportTest, AnswersOnlyWhileTheHostServes) {
    HealthReport report("1.2.3");
    StorageHealth storage;
    storage.keys = 3;
    EXPECT_EQ(report.answer(storage).status, 503U);
    EXPECT_EQ(*report.answer(storage).body, R"({"status":"not-serving","version":"1.2.3","uptimeSeconds":0,)"
                                            R"("storage":{"writable":true,"keys":3,"failures":0}})");
    report.setServing(true);
    const HttpAnswer answer = report.answer(storage);
    EXPECT_EQ(answer.status, 200U);
    EXPECT_EQ(answer.contentType, "application/json");
    EXPECT_EQ(*answer.body, R"({"status":"ok","version":"1.2.3","uptimeSeconds":0,)"
                            R"("storage":{"writable":true,"keys":3,"failures":0}})");
    report.setServing(false);
    EXPECT_EQ(report.answer(storage).status, 503U);
}

TEST(HealthReportTest, IsDegradedWhileChangesDoNotReachTheDatabase) {
    HealthReport report("1.2.3");
    report.setServing(true);
    StorageHealth storage;
    storage.writable = false;
    storage.failures = 2;
    storage.lastFailure = "the disk is full\xff";
    const HttpAnswer answer = report.answer(storage);
    EXPECT_EQ(answer.status, 200U);
    EXPECT_EQ(*answer.body, R"({"status":"degraded","version":"1.2.3","uptimeSeconds":0,"storage":{"writable":false,)"
                            "\"keys\":0,\"failures\":2,\"lastFailure\":\"the disk is full\xEF\xBF\xBD\"}}");
}

}  // namespace SettingsHost
