#pragma once

#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "model/ReferenceModel.h"

namespace SettingsHandlerFuzz {

/// Sets the state of the fakes to that of the model.
inline void surround(SettingsHandlerTesting::FakeStorage& storage, SettingsHandlerTesting::FakeSdkBridge& sdk,
                     SettingsHandlerTesting::FakeDeviceInfo& device, const Surroundings& around) {
    storage.values = around.stored;
    storage.refusesWrites = around.refusesWrites;
    storage.refusesRemoval = around.refusesRemoval;
    storage.refusesClearing = around.refusesClearing;
    sdk.locales = around.locales;
    sdk.timezone = around.timezone;
    sdk.captionsEnabled = around.captionsEnabled;
    sdk.doNotDisturbEnabled = around.doNotDisturbEnabled;
    sdk.refusesSettings = around.refusesSettings;
    device.info = around.deviceInfo;
}

}  // namespace SettingsHandlerFuzz
