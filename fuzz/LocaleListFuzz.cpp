// Any text as the assistant's locales: what the guard lets through is an array the handler can take or no JSON at all,
// and a list that was taken is unchanged when it comes back as the voice SDK's list.

#include <fuzzer/FuzzedDataProvider.h>

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
    FuzzedDataProvider input(data, size);
    HandlerWorld world(surroundingsFrom(input.ConsumeIntegral<std::uint8_t>()));
    const std::string value = input.ConsumeRemainingBytesAsString();

    const Envelope json(value);
    const bool mayPass = !json.isJson() || (json.isArray() && json.nesting() <= Wire::maximumNesting);
    check(SettingsHost::isSafeForHandler(key, value) == mayPass, "the guard knows what may pass");
    check(SettingsHost::isSafeForHandler("deviceName", value), "the guard is for the locales alone");
    const std::string request = R"({"payload":{"settingDBId":"orliaLocale","to":)" + stringText(value) + "}}";
    check(mayBeGiven(request) == mayPass, "the guard sees the value inside a request");
    if (!mayPass) {
        return 0;
    }

    for (int number = 0; number < HandlerWorld::observerCount; ++number) {
        world.handler->addOrliaLocaleObserver(world.localeObservers[static_cast<std::size_t>(number)]);
        world.model.addLocaleObserver(number);
    }
    const bool changed = write(world, value);
    const auto& entries = world.lastEntries();
    check(changed == hasEntry(entries, {"sdk.setLocales("}), "what is a change reaches the voice SDK");
    check(changed == hasEntry(entries, {"transport.sendMessage(25"}), "what is a change is announced");
    check(changed == hasEntry(entries, {"observer3.orliaLocale("}), "what is a change reaches the observers");
    check(!hasEntry(entries, {"storage."}), "the locales are not stored");
    if (changed) {
        check(!write(world, arrayText(world.sdk->locales)), "the voice SDK's own list is no change");
    }
    world.expectSameCache("writing the locales");
    return 0;
}
