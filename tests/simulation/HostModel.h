#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "simulation/Expectation.h"
#include "simulation/HandlerModel.h"
#include "simulation/SimulatedHost.h"

namespace SettingsHandlerFuzz {
class Envelope;
}

namespace SettingsSimulation {

/// A frame that the host must send.
struct Output {
    /// Nothing: every client of the settings.
    std::optional<std::size_t> receiver;
    std::shared_ptr<Expectation> frame;
    /// An event that is new; not one that is sent again.
    bool isEvent = false;
    /// How many changes were on the disk before it.
    long persisted = 0;
};

/// An independent, simple implementation of the reference host, for any number of clients: what each frame leads to,
/// what is stored, and what is left after a restart. It shares no code with the product, and can be copied.
class HostModel : public HandlerModel {
public:
    /// A client, as the listeners know it.
    struct Sender {
        std::size_t connection;
        Kind kind;
    };
    /// The clock of the host, when it began to handle a frame and after that.
    struct Time {
        std::int64_t begin;
        std::int64_t end;
    };

    /// A new run begins.
    void restart(const Durable& onDisk);

    /// The host handles a frame; nothing for one that is too large.
    std::vector<Output> handle(const Sender& sender, const std::optional<std::string>& frame, const Time& now);

    /// Is a rolled back batch not read again yet, because the storage could not be read?
    bool waitsForStorage() const { return waits; }
    /// It is read again now.
    std::vector<Output> readAgain(const Time& now);
    bool storageWorked() const { return storageWorks; }

    /// The name of this run; empty as long as nobody knows it.
    std::string run;

    /// Of all that it knows but the ghosts, to compare two of them.
    std::uint64_t digest() const;

    bool restartWasAsked() const { return asksRestart; }
    /// Do WebSockets with the key until now have to go?
    bool keyWasReplaced() const { return replacesKey; }
    long newestSequence() const { return sequence; }
    long historySince() const { return completeAfter; }

protected:
    void sendEvent(const std::string& key, const std::string& payload) override;
    void sendReply(const std::string& messageId, const std::string& payload) override;
    void valueChanged(const std::string& key) override { changedKeys.insert(key); }

private:
    using Envelope = SettingsHandlerFuzz::Envelope;

    struct Known {
        std::deque<std::shared_ptr<SentEvent>> events;
        /// Of a notice, with the event before it.
        std::deque<std::pair<long, std::set<std::string>>> notices;
        /// Of events and notices in their order: is it an event?
        std::deque<bool> order;
    };

    void toSender(Expectation frame);
    void toSender(const std::string& text);
    void toAll(Expectation frame, bool isEvent);
    void refuse(const std::string& code, std::optional<std::size_t> index = std::nullopt);

    void perform(const std::string& origin, const std::string& client);
    void performed();
    void sendNotice(const std::set<std::string>& keys);
    void remember(const std::shared_ptr<SentEvent>& event);
    void remember(const std::set<std::string>& keys);
    Known& ownHistory();
    void forgetOldest();
    void forgetHistory();

    void settingsFrame(const std::string& frame);
    void request(const std::string& text, std::optional<std::size_t> index, bool isRolledBack);
    void deliver(int type, const std::string& text, const std::string& client);
    void answer(int type, const std::string& messageId, const SettingsHandlerFuzz::Answer& given,
                std::optional<std::string> value);
    void batch(const Envelope& frame);
    void rollBack(const std::vector<std::string>& requests, const std::set<std::string>& eventKeys);
    void startOver();
    void query(const Envelope& frame);
    void hello(const std::string& id, const Envelope& members);
    void findEvents(const std::string& id, const Envelope& members);
    void status(const std::string& id);
    void page(const std::string& id, const Envelope& members);
    void backUp(const std::string& id);

    void deviceFrame(const std::string& frame);
    std::string command(const std::string& name, const Envelope& frame);
    std::string deviceSetting(const Envelope& frame);
    std::string deviceSwitch(const std::string& name, bool enabled);
    std::string deviceLocales(const std::string& name, const Envelope& frame);
    std::string deviceTimezone(const Envelope& frame);
    std::string shown() const;
    std::string faultCommand(const Envelope& frame);
    std::string faultList() const;

    std::shared_ptr<Known> known = std::make_shared<Known>();
    long completeAfter = 0;
    long sequence = 0;
    std::map<std::size_t, std::string> names;
    bool waits = false;
    std::set<std::string> keysToReadAgain;

    // Of the frame that is handled.
    Sender sender{0, Kind::SOCKET};
    Time time{0, 0};
    std::string origin;
    std::string client;
    int requestType = 0;
    std::set<std::string> changedKeys;
    std::set<std::string> announcedKeys;
    std::vector<Output> outputs;
    bool asksRestart = false;
    bool replacesKey = false;
};

}  // namespace SettingsSimulation
