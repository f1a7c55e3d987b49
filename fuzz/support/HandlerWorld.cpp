#include "support/HandlerWorld.h"

#include "SettingsHandlerKit/Logging.h"
#include "support/Check.h"
#include "support/Surround.h"
#include "support/TableOrder.h"

namespace SettingsHandlerFuzz {

namespace {

using Values = std::map<std::string, std::string>;

/// One entry for each value, to be compared like a journal.
Entries linesOf(const Values& values) {
    Entries lines;
    for (const auto& [key, value] : values) {
        lines.push_back(key + " = " + value);
    }
    return lines;
}

void checkSameValues(const Values& actual, const Values& expected, std::string_view what, std::string_view detail) {
    if (actual != expected) {
        checkSame(linesOf(actual), linesOf(expected), what, detail);
    }
}

const ReferenceModel& modelBeforeStart() {
    static const ReferenceModel model(keysInTableOrder());
    return model;
}

}  // namespace

HandlerWorld::HandlerWorld(Recorder& recorder, const Surroundings& around)
    : journal(recorder.journal), model(modelBeforeStart()) {
    handler = std::make_shared<QuickHandler>(transport, storage,
                                             std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal), sdk,
                                             std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal), device);
    journal.take();
    surround(around);
}

void HandlerWorld::start(const Start* known) {
    if (known != nullptr) {
        handler->initializeWith(known->values);
        journal.take();
        model = known->model;
        return;
    }
    initialValues = handler->initializeAndTell();
    model.initializeSettings();
    expectSame("the start");
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

/// Takes the journal to be compared.
void HandlerWorld::take() {
    compared = journal.take();
    if (record != nullptr) {
        record->insert(record->end(), compared.begin(), compared.end());
    }
}

void HandlerWorld::expectSame(std::string_view after) {
    take();
    checkSame(compared, model.take(), "the journal of ", after);
    checkSameValues(storage.values, model.around.stored, "the stored values after ", after);
    checkSame(sdk->locales, model.around.locales, "the locales after ", after);
    check(sdk->timezone == model.around.timezone, "the time zone after ", after);
}

void HandlerWorld::expectRejection(const std::string& line) {
    take();
    checkSame(compared, {"log 3 " + SettingsHandlerKit::programName() + ":" + line}, "the journal of a rejection");
    check(handler->outcome().rejected, "the outcome of a rejection");
}

void HandlerWorld::expectSameCache(std::string_view after) {
    checkSameValues(handler->getCurrentSettingsMap(), model.getCurrentSettingsMap(), "the cache after ", after);
    expectSame("reading the cache");
}

}  // namespace SettingsHandlerFuzz
