#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "FaultTable.h"
#include "FaultyBridge.h"
#include "FaultyDevice.h"
#include "FaultyStorage.h"
#include "FaultyTransport.h"
#include "SettingsHandlerTesting/contracts/DeviceInfoContract.h"
#include "SettingsHandlerTesting/contracts/SdkBridgeContract.h"
#include "SettingsHandlerTesting/contracts/StorageContract.h"
#include "SettingsHandlerTesting/contracts/TransportContract.h"

/// Runs the contracts on faulty implementations, one fault per iteration of all tests. Each fault must be found by
/// exactly the checks that FaultTable.cpp names, and every check must find at least one. Without a fault no check may
/// fail.
namespace SettingsHandlerTesting {

using namespace SettingsHandlerTests;

INSTANTIATE_TYPED_TEST_SUITE_P(Faulty, StorageContract, FaultyStorageMaker, NumberedNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Faulty, DeviceInfoContract, FaultyDeviceMaker, NumberedNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Faulty, SdkBridgeContract, FaultyBridgeMaker, NumberedNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Faulty, TransportContract, FaultyTransportMaker, NumberedNames);

}  // namespace SettingsHandlerTesting

namespace SettingsHandlerTests {

namespace {

using Checks = std::set<std::string>;

/// Selects the fault of each iteration and compares the checks that fail with the expected ones.
class FaultRun : public ::testing::EmptyTestEventListener {
public:
    bool isAsExpected() const { return differences == 0; }

private:
    void OnTestIterationStart(const ::testing::UnitTest& /*unitTest*/, int iteration) override {
        Fault::choose(faults().at(static_cast<std::size_t>(iteration)).name);
        failed.clear();
        texts.clear();
    }

    void OnTestPartResult(const ::testing::TestPartResult& result) override {
        if (result.failed()) {
            texts.emplace_back(result.summary());
        }
    }

    void OnTestEnd(const ::testing::TestInfo& test) override {
        const std::string suite = test.test_suite_name();
        const auto begin = suite.find('/') + 1;
        const std::string check = suite.substr(begin, suite.find('/', begin) - begin) + "." + test.name();
        all.insert(check);
        if (test.result()->Failed()) {
            failed.insert(check);
            finding.insert(check);
        }
        if (test.result()->Skipped()) {
            report(check + " was skipped");
        }
    }

    void OnTestIterationEnd(const ::testing::UnitTest& /*unitTest*/, int iteration) override {
        const auto& fault = faults().at(static_cast<std::size_t>(iteration));
        if (failed != fault.foundBy) {
            report("fault '" + fault.name + "':\n  expected" + listed(fault.foundBy) + "\n  failed  " + listed(failed));
            for (const auto& text : texts) {
                std::cout << "    " << text.substr(0, 500) << '\n';
            }
        }
    }

    void OnTestProgramEnd(const ::testing::UnitTest& /*unitTest*/) override {
        for (const auto& check : all) {
            if (finding.count(check) == 0) {
                report(check + " has found nothing");
            }
        }
        std::cout << all.size() << " checks, " << faults().size() - 1 << " faults, " << differences << " differences\n";
    }

    static std::string listed(const Checks& checks) {
        std::string text;
        for (const auto& check : checks) {
            text += " " + check;
        }
        return text.empty() ? " nothing" : text;
    }

    void report(const std::string& difference) {
        ++differences;
        std::cout << difference << '\n';
    }

    Checks all;
    Checks finding;
    Checks failed;
    std::vector<std::string> texts;
    int differences = 0;
};

int runFaults() {
    auto& listeners = ::testing::UnitTest::GetInstance()->listeners();
    const std::unique_ptr<::testing::TestEventListener> printer(listeners.Release(listeners.default_result_printer()));
    FaultRun run;
    listeners.Append(&run);
    GTEST_FLAG_SET(repeat, static_cast<int>(faults().size()));
    GTEST_FLAG_SET(recreate_environments_when_repeating, false);
    const int anythingFailed = RUN_ALL_TESTS();
    listeners.Release(&run);
    return anythingFailed != 0 && run.isAsExpected() ? 0 : 1;
}

}  // namespace

}  // namespace SettingsHandlerTests

int main(int argumentCount, char** arguments) {
    ::testing::InitGoogleTest(&argumentCount, arguments);
    return SettingsHandlerTests::runFaults();
}
