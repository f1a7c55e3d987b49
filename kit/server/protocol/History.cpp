#include "server/protocol/History.h"

namespace SettingsHandlerKit {

void History::add(Announcement /*announcement*/) {}

void History::clear() {}

}  // namespace SettingsHandlerKit
