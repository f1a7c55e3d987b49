#include "support/Guarded.h"

#include "Wire/FrameInspector.h"
#include "handler/LocaleGuard.h"

namespace SettingsHandlerFuzz {

bool mayBeGiven(const std::string& text) {
    rapidjson::Document request;
    if (!SettingsHost::inspectFrame(text, request)) {
        return SettingsHost::requestMayReachHandler(request);
    }
    request.Parse<Utils::jsonParseFlags>(text.c_str());
    return request.HasParseError() || SettingsHost::requestMayReachHandler(request);
}

}  // namespace SettingsHandlerFuzz
