// Two functions that take everything public. Compiled once with the headers of version 1 and once with today's, for
// abidiff, which compares what it can reach from a function: the library has none that takes each interface as it is.
#ifdef OF_VERSION_1
#include "Version1.h"
#else
#include "CommunicationHandler/MessageType.h"
#include "DeviceAbstractionLayer/AppNameToStringMapping.h"
#include "Metrics/MetricsCache.h"
#include "SettingsHandler/SettingsHandler.h"
#include "Utils/RapidjsonUtil.h"
#include "VessaLogger/Log.h"
#endif

#include <tuple>
#include <type_traits>

using Handler = SettingsHandler::SettingsHandler;
using Transport = CommunicationHandler::CommunicationHandlerInterface;
using Storage = SDKWrapper::StorageManagerInterface;
using MetricsSink = Metrics::MetricsDelegateInterface;
using Bridge = teskVessa::SDKBridgeInterface;
using EntitlementObserver = teskVessa::NativeBridgeInterface;
using Launcher = DeviceAbstractionLayer::AppLaunch;
using DeviceInfo = DeviceAbstractionLayer::OrliaDeviceInfoInterface;
using LocaleObserver = VessaNativeCommon::OrliaLocaleObserverInterface;
using NameObserver = VessaNativeCommon::FriendlyNameObserverInterface;

/// The numbers of SettingsNamesType grow with the catalogue; its own test has them.
[[gnu::visibility("default")]] void publicTypes(Handler&, Transport&, Storage&, MetricsSink&, Bridge&,
                                                EntitlementObserver&, Launcher&, DeviceInfo&, LocaleObserver&,
                                                NameObserver&, Metrics::MetricsCache&, VessaLogger::Log&,
                                                VessaLogger::LogLevel, VessaLogger::LogSource,
                                                CommunicationHandler::MessageType, DeviceAbstractionLayer::AppName) {}

// What neither the name of a symbol nor abidiff tells: results of functions, types of tables, what is static, which
// destructors are virtual. All of it becomes part of the name of a function here.

struct Derived : Handler {
    using Operations =
        std::tuple<decltype(&Derived::create), decltype(&Derived::handleGetSettingsRequest),
                   decltype(&Derived::handleSetSettingRequest), decltype(&Derived::handleIsOrliaSelectedVARequest),
                   decltype(&Derived::handleOpenVASettingsRequest), decltype(&Derived::handleLogOutRequest),
                   decltype(&Derived::isSDKSetting), decltype(&Derived::getSDKSetting),
                   decltype(&Derived::settingChanged), decltype(&Derived::emitSettingMetric),
                   decltype(&Derived::stringifyVector), decltype(&Derived::onOrliaLocaleChange),
                   decltype(&Derived::onFriendlyNameChanged), decltype(&Derived::onEntitlementStatusChanged),
                   decltype(&Derived::openVASettings), decltype(&Derived::isOrliaSelectedAsVA)>;
};

using Functions = std::tuple<
    decltype(&SettingsHandler::settingNameFromType), decltype(&SettingsHandler::settingTypeFromName),
    decltype(&SettingsHandler::defaultValueForSetting), decltype(&SettingsHandler::stringToSettingsNamesTypeMapping),
    decltype(&SettingsHandler::SettingsNamesTypeToStringMapping),
    decltype(&SettingsHandler::SettingsNamesTypeToDefaultValuesMapping),
    decltype(&DeviceAbstractionLayer::AppNameToStringMapping), decltype(&Metrics::MetricsCache::instance),
    decltype(&Metrics::MetricsCache::setOrliaLocale), decltype(&VessaLogger::Log::instance),
    decltype(&VessaLogger::Log::getThreadId), decltype(&VessaLogger::Log::emitLog),
    decltype(&Utils::RapidjsonUtil::tryGetObjectMember), decltype(&Utils::RapidjsonUtil::tryGetInt64Member),
    decltype(&Utils::RapidjsonUtil::tryGetStringMember), decltype(&Utils::RapidjsonUtil::tryGetValueArrayMember),
    decltype(&Utils::RapidjsonUtil::stringify), decltype(&Utils::RapidjsonUtil::stringifyVector)>;

using Numbers =
    std::tuple<std::underlying_type_t<SettingsHandler::SettingsNamesType>,
               std::underlying_type_t<VessaLogger::LogLevel>, std::underlying_type_t<VessaLogger::LogSource>,
               std::underlying_type_t<CommunicationHandler::MessageType>,
               std::underlying_type_t<DeviceAbstractionLayer::AppName>>;

template <typename... Classes>
using VirtualDestructors = std::tuple<std::bool_constant<std::has_virtual_destructor_v<Classes>>...>;

[[gnu::visibility("default")]] void publicOperations(Derived::Operations&) {}
[[gnu::visibility("default")]] void publicFunctions(Functions&) {}
[[gnu::visibility("default")]] void publicNumbers(Numbers&) {}
[[gnu::visibility("default")]] void virtualDestructors(
    VirtualDestructors<Handler, Transport, Storage, MetricsSink, Bridge, EntitlementObserver, Launcher, DeviceInfo,
                       LocaleObserver, NameObserver, DeviceAbstractionLayer::DeviceInfoObserverInterface,
                       DeviceAbstractionLayer::HandsfreeStateObserverInterface>&) {}
