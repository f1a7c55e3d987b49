#include <algorithm>

#include "Keys.h"
#include "Verbs.h"
#include "Wire/Catalogue.h"
#include "Wire/Requests.h"

namespace SettingsCtl {

ExitStatus get(const Context& context, const std::vector<std::string>& keys) {
    refuseUnknownKeys(context, keys);
    auto session = context.openSession();
    const auto values = session.getSettings(keys);
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
    auto session = context.openSession();
    const std::string messageId = session.newMessageId();
    session.send({Wire::bareRequest(Wire::IS_ORLIA_SELECTED_VA, messageId)});
    const auto isSelected = session.receiveReply(messageId).booleanAt({"payload", "isOrliaSelectedAsVA"});
    if (!isSelected) {
        throw Wire::MalformedFrame();
    }
    const std::string text = *isSelected ? "true" : "false";
    printLine(context.style, context.style.json ? "{\"isOrliaSelectedAsVA\":" + text + "}" : text);
    return DONE;
}

}  // namespace SettingsCtl
