#include "support/Guarded.h"

#include "Wire/FrameInspector.h"
#include "handler/LocaleGuard.h"

namespace SettingsHandlerFuzz {

bool mayBeGiven(const std::string& text) {
    rapidjson::Document request;
    if (!Wire::inspectFrame(text, request)) {
        return SettingsHandlerKit::isRequestSafeForHandler(request);
    }
    request.Parse<Utils::jsonParseFlags>(text.c_str());
    return request.HasParseError() || SettingsHandlerKit::isRequestSafeForHandler(request);
}

}  // namespace SettingsHandlerFuzz
