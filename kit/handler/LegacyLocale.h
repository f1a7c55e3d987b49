#pragma once

#include "SDKWrapper/StorageManagerInterface.h"

namespace SettingsHandlerKit {

/// Moves the locale that older software stored to another key, see `LegacyValueStorage::setAside`, if it would end the
/// process in the handler's migration. Logs it at level 3. Errors: `std::runtime_error` when it could not be moved.
void setUnusableLocaleAside(SDKWrapper::StorageManagerInterface& storage);

}  // namespace SettingsHandlerKit
