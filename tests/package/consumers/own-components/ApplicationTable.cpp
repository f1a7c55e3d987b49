#include "DeviceAbstractionLayer/AppNameToStringMapping.h"

namespace DeviceAbstractionLayer {

std::unordered_map<AppName, std::string> AppNameToStringMapping{{AppName::VA_SETTINGS_APP, "own application"}};

}  // namespace DeviceAbstractionLayer
