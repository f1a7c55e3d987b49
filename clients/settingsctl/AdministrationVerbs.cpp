#include "SettingsClient/Client.h"
#include "Verbs.h"

namespace SettingsCtl {

ExitStatus page(const Context& context, bool newKey) {
    SettingsClient::Client client = context.client();
    const auto address = client.pageAddress(newKey);
    if (!address) {
        throw Failure(REFUSED, "the host serves no pages");
    }
    printLine(context.style,
              context.style.json ? "{\"page\":" + jsonObject({{"address", *address}}) + "}" : escaped(*address));
    return DONE;
}

ExitStatus backUp(const Context& context) {
    SettingsClient::Client client = context.client();
    const std::string file = client.backUp();
    printLine(context.style, context.style.json ? "{\"backup\":" + jsonObject({{"file", file}}) + "}" : escaped(file));
    return DONE;
}

}  // namespace SettingsCtl
