#include <algorithm>

#include "Keys.h"
#include "Verbs.h"
#include "Wire/Catalogue.h"

namespace SettingsCtl {

ExitStatus get(const Context& context, const std::vector<std::string>& keys) {
    refuseUnknownKeys(context, keys);
    const auto values = context.client().get(keys);
    printValues(context.style, values);
    ExitStatus status = DONE;
    for (const auto& key : keys) {
        if (values.count(key) == 0) {
            printError("'" + key + "' has no value");
            status = REFUSED;
        }
    }
    return status;
}

ExitStatus list(const Context& context) {
    std::vector<std::string> keys;
    for (const auto& setting : Wire::catalogue()) {
        keys.push_back(setting.key);
    }
    std::sort(keys.begin(), keys.end());
    if (context.style.json) {
        printLine(context.style, jsonArray(keys));
        return DONE;
    }
    for (const auto& key : keys) {
        printLine(context.style, key);
    }
    return DONE;
}

ExitStatus selected(const Context& context) {
    const std::string text = context.client().isSelected() ? "true" : "false";
    printLine(context.style, context.style.json ? "{\"isOrliaSelectedAsVA\":" + text + "}" : text);
    return DONE;
}

}  // namespace SettingsCtl
