#include "server/protocol/Batches.h"

#include <algorithm>
#include <exception>
#include <set>
#include <utility>

#include "SettingsHandlerKit/Logging.h"
#include "Wire/FrameInspector.h"
#include "Wire/MessageType.h"
#include "Wire/RefusalCode.h"

namespace SettingsHandlerKit {

namespace {

constexpr rapidjson::SizeType mostRequests = 64;

/// With all members, also those that are there twice.
std::string compactText(const rapidjson::Value& value) {
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    value.Accept(writer);
    return {text.GetString(), text.GetSize()};
}

}  // namespace

bool Batches::isBatch(const rapidjson::Value& batch) const {
    return batch.IsArray() && batch.Size() >= 1 && batch.Size() <= mostRequests &&
           std::all_of(batch.Begin(), batch.End(), [this](const rapidjson::Value& element) {
               const int type = element.IsObject() ? Wire::requestType(element).value_or(0) : 0;
               return (type == Wire::GET_SETTINGS || type == Wire::IS_ORLIA_SELECTED_VA ||
                       type == Wire::SET_SETTINGS) &&
                      requests.hasHandler(type);
           });
}

void Batches::handle(const std::shared_ptr<Client>& client, const rapidjson::Value& batch) {
    if (!isBatch(batch)) {
        clients.refuse(client, {Wire::RefusalCode::badBatch,
                                R"("batch" must be an array of 1 to 64 requests of the types 7, 18 and 24)"});
        return;
    }
    Elements elements;
    for (const auto& element : batch.GetArray()) {
        elements.emplace_back(element, compactText(element));
    }
    clients.hold();
    announcements.beginBatch();
    if (transactions) {
        transactions->begin();
    }
    deliver(client, elements, Requests::Delivery::NORMAL);
    if (!transactions || transactions->commit()) {
        announcements.commitBatch();
    } else {
        clients.dropHeld();
        undo(client, elements);
    }
    clients.sendHeld();
}

void Batches::deliver(const std::shared_ptr<Client>& client, const Elements& elements, Requests::Delivery delivery) {
    std::size_t index = 0;
    for (const auto& [members, text] : elements) {
        requests.handle({client, members, text, index}, delivery);
        ++index;
    }
}

/// Everybody learns the real values.
void Batches::undo(const std::shared_ptr<Client>& client, const Elements& elements) {
    const auto changed = announcements.rollBackBatch();
    std::set<std::string> keys;
    for (const auto& element : elements) {
        const auto key = Wire::requestedChange(element.first).settingDBId;
        if (key && Wire::requestType(element.first) == Wire::SET_SETTINGS) {
            keys.emplace(*key);
        }
    }
    announcements.perform({}, [&] {
        try {
            transactions->restore(changed);
        } catch (const std::exception& error) {
            writeLog(VessaLogger::ERROR,
                     std::string("cannot restore the settings after a failed batch: ") + error.what());
        }
        deliver(client, elements, Requests::Delivery::AFTER_FAILED_BATCH);
        announcements.reread(keys);
    });
}

}  // namespace SettingsHandlerKit
