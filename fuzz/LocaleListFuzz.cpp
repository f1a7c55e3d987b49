// Any text as the value of orliaLocale: the guard accepts an array within the nesting limit or a text that is not JSON,
// and a list that was set is unchanged when it is read back from the voice SDK.

#include <fuzzer/FuzzedDataProvider.h>

#include "SettingsHandlerKit/SettingDescriptions.h"
#include "Wire/JsonShape.h"
#include "handler/LocaleGuard.h"
#include "model/Json.h"
#include "support/Check.h"
#include "support/Guarded.h"
#include "support/HandlerWorld.h"
#include "support/Input.h"

namespace {

using namespace SettingsHandlerFuzz;

const std::string key = "orliaLocale";

bool write(HandlerWorld& world, const std::string& value) {
    const bool changed = world.handler->setSetting(key, value);
    check(changed == world.model.setSetting(key, value), "the result of writing the locales");
    world.expectSame("writing the locales");
    return changed;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Recorder recorder;
    FuzzedDataProvider input(data, size);
    HandlerWorld world(recorder, surroundingsFrom(input.ConsumeIntegral<std::uint8_t>()));
    const std::string value = input.ConsumeRemainingBytesAsString();

    const Envelope json(value);
    const bool mayPass = !json.isJson() || (json.isArray() && json.nesting() <= Wire::maximumNesting);
    check(SettingsHandlerKit::isSafeForHandler(key, value) == mayPass, "the guard accepts what the handler can handle");
    check(SettingsHandlerKit::isSafeForHandler("deviceName", value), "the guard checks orliaLocale only");
    const std::string request = R"({"payload":{"settingDBId":"orliaLocale","to":)" + stringText(value) + "}}";
    check(mayBeGiven(request) == mayPass, "the guard sees the value inside a request");
    if (!mayPass) {
        check(!world.handler->setSetting(key, value), "the result of a rejected setSetting");
        world.expectRejection("rejected orliaLocale: must be a JSON array of at most 32 levels");
        return 0;
    }

    world.makeObservers();
    for (int number = 0; number < HandlerWorld::observerCount; ++number) {
        world.handler->addOrliaLocaleObserver(world.localeObservers[static_cast<std::size_t>(number)]);
        world.model.addLocaleObserver(number);
    }
    const bool changed = write(world, value);
    const auto locales = SettingsHandlerKit::asLocales(value);
    check((world.handler->outcome().reason == SettingsHandlerKit::Outcome::Reason::WRONG_FORM) == !locales,
          "the outcome tells a list of locales from other texts");
    check(!changed || locales == world.sdk->locales, "the typed view has the locales that were set");
    const auto& entries = world.lastEntries();
    check(changed == hasEntry(entries, {"sdk.setLocales("}), "what is a change reaches the voice SDK");
    check(changed == hasEntry(entries, {"transport.sendMessage(25"}), "what is a change is reported");
    check(changed == hasEntry(entries, {"observer3.orliaLocale("}), "what is a change reaches the observers");
    check(!hasEntry(entries, {"storage."}), "the locales are not stored");
    if (changed) {
        check(!write(world, arrayText(world.sdk->locales)), "writing the voice SDK's own list changes nothing");
    }
    world.expectSameCache("writing the locales");
    return 0;
}
