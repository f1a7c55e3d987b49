#include "mosquitto/Pauses.h"

#include <algorithm>

namespace SettingsMqtt {

Pauses::Milliseconds Pauses::next(Milliseconds connected) {
    const bool isFirst = upTo == Milliseconds::zero() || connected >= steady;
    upTo = std::min(isFirst ? first : 2 * upTo, longest);
    return Milliseconds(std::uniform_int_distribution<Milliseconds::rep>(upTo.count() / 2, upTo.count())(random));
}

}  // namespace SettingsMqtt
