#include "server/protocol/Queries.h"

namespace SettingsHandlerKit {

bool Queries::handles(const rapidjson::Document& /*frame*/) const {
    return false;
}

void Queries::handle(const std::shared_ptr<Client>& /*client*/, const rapidjson::Document& /*frame*/) {}

}  // namespace SettingsHandlerKit
