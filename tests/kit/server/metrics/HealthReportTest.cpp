#include "server/metrics/HealthReport.h"

namespace SettingsHandlerKit {

TEST(HealthReportTest, AnswersOnlyWhileTheHostServes) {
    HealthReport report("1.2.3", {});
    StorageHealth storage;
    storage.keys = 3;
    EXPECT_EQ(report.response(storage).status, 503U);
    EXPECT_EQ(*report.response(storage).body, R"({"status":"not-serving","version":"1.2.3","uptimeSeconds":0,)"
                                              R"("storage":{"writable":true,"keys":3,"failures":0}})");
    report.setServing(true);
    const HttpResponse response = report.response(storage);
    EXPECT_EQ(response.status, 200U);
    EXPECT_EQ(response.contentType, "application/json");
    EXPECT_EQ(*response.body, R"({"status":"ok","version":"1.2.3","uptimeSeconds":0,)"
                              R"("storage":{"writable":true,"keys":3,"failures":0}})");
    report.setServing(false);
    EXPECT_EQ(report.response(storage).status, 503U);
}

TEST(HealthReportTest, IsDegradedWhileChangesDoNotReachTheDatabase) {
    HealthReport report("1.2.3", {});
    report.setServing(true);
    StorageHealth storage;
    storage.writable = false;
    storage.failures = 2;
    storage.lastFailure = "the disk is full\xff";
    const HttpResponse response = report.response(storage);
    EXPECT_EQ(response.status, 200U);
    EXPECT_EQ(*response.body, R"({"status":"degraded","version":"1.2.3","uptimeSeconds":0,"storage":{"writable":false,)"
                              "\"keys\":0,\"failures\":2,\"lastFailure\":\"the disk is full\xEF\xBF\xBD\"}}");
}

TEST(HealthReportTest, ReportsWhatReplacedADamagedDatabase) {
    StorageHealth storage;
    HealthReport restored("1.2.3", {Recovery::Source::BACKUP, "settings.db.damaged"});
    restored.setServing(true);
    EXPECT_EQ(*restored.response(storage).body,
              R"({"status":"recovered","version":"1.2.3","uptimeSeconds":0,"storage":{"writable":true,"keys":0,)"
              R"("failures":0,"recoveredFrom":"backup","setAside":"settings.db.damaged"}})");
    storage.writable = false;
    EXPECT_EQ(restored.response(storage).body->substr(0, 21), R"({"status":"degraded",)");
    HealthReport anew("1.2.3", {Recovery::Source::DEFAULTS, ""});
    anew.setServing(true);
    EXPECT_EQ(*anew.response(StorageHealth()).body,
              R"({"status":"recovered","version":"1.2.3","uptimeSeconds":0,"storage":{"writable":true,"keys":0,)"
              R"("failures":0,"recoveredFrom":"defaults"}})");
}

}  // namespace SettingsHandlerKit
