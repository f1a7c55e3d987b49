#include "support/HandlerWorld.h"

#include "SettingsHandlerKit/Logging.h"
#include "support/Check.h"
#include "support/Surround.h"
#include "support/TableOrder.h"

namespace SettingsHandlerFuzz {

namespace {

/// One entry for each value, to be compared like a journal.
std::vector<std::string> linesOf(const std::map<std::string, std::string>& values) {
    std::vector<std::string> lines;
    for (const auto& [key, value] : values) {
        lines.push_back(key + " = " + value);
    }
    return lines;
}

}  // namespace

HandlerWorld::HandlerWorld(const Surroundings& around) : model(keysInTableOrder()) {
    handler = SettingsHandlerKit::CheckedSettingsHandler::create(
        transport, storage, std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal), sdk,
        std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal), device);
    journal.take();
    surround(around);
    makeObservers();
}

void HandlerWorld::makeObservers() {
    for (int number = 0; number < observerCount; ++number) {
        const std::string name = "observer" + std::to_string(number);
        localeObservers.push_back(std::make_shared<SettingsHandlerTesting::FakeLocaleObserver>(journal, name));
        friendlyNameObservers.push_back(
            std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(journal, name));
        entitlementObservers.push_back(
            std::make_shared<SettingsHandlerTesting::FakeEntitlementObserver>(journal, name));
    }
    friendlyNameObservers.at(ReferenceModel::selfRemover)->reaction = [this] {
        handler->removeFriendlyNameObserver(friendlyNameObservers.at(ReferenceModel::selfRemover));
    };
    entitlementObservers.at(ReferenceModel::selfRemover)->reaction = [this] {
        handler->removeEntitlementStatusObserver(entitlementObservers.at(ReferenceModel::selfRemover));
    };
}

void HandlerWorld::surround(const Surroundings& around) {
    model.around = around;
    SettingsHandlerFuzz::surround(storage, *sdk, *device, around);
}

void HandlerWorld::expectSame(const std::string& after) {
    compared = journal.take();
    checkSame(compared, model.take(), "the journal of " + after);
    checkSame(linesOf(storage.values), linesOf(model.around.stored), "the stored values after " + after);
    checkSame(sdk->locales, model.around.locales, "the locales after " + after);
    check(sdk->timezone == model.around.timezone, "the time zone after " + after);
}

void HandlerWorld::expectRejection(const std::string& line) {
    checkSame(journal.take(), {"log 3 " + SettingsHandlerKit::programName() + ":" + line},
              "the journal of a rejection");
    check(handler->outcome().rejected, "the outcome of a rejection");
}

void HandlerWorld::expectSameCache(const std::string& after) {
    checkSame(linesOf(handler->getCurrentSettingsMap()), linesOf(model.getCurrentSettingsMap()),
              "the cache after " + after);
    expectSame("reading the cache");
}

}  // namespace SettingsHandlerFuzz
