#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "SettingsHandler/SettingsNames.h"
#include "VessaNativeCommon/FriendlyNameObserverInterface.h"
#include "support/QuietCollaborators.h"

/// The least work that the handler's operations may consist of, written down straight: no virtual operation of its own
/// and no memory from the heap that the required steps do not ask for. The catalogue, the JSON utilities, the logger
/// and the collaborators are called as any program would call them. What the handler costs more than this is what can
/// still be saved; its log lines cannot cost less, because their steps are fixed.
namespace Benchmarks::Floor {

class Floor {
public:
    explicit Floor(QuietCollaborators& quietCollaborators) : collaborators(quietCollaborators) {}

    void initialize();

    /// One SetSettings request each, whole; the name says which road its setting takes.
    bool setStored(const std::string& request);
    bool setApplied(const std::string& request);
    bool setHandsFree(const std::string& request);
    bool setFriendlyName(const std::string& request);
    bool setEntitlementStatus(const std::string& request);
    bool setTimezone(const std::string& request);
    bool setLocale(const std::string& request);
    bool setReadOnly(const std::string& request);

    void getSettings(const std::string& request);

    void notifyLocaleChange(const std::string& locale);
    void notifyLocaleChange(const std::vector<std::string>& locales);
    void notifyTimezoneChange(const std::string& timezone);
    void notifySystemSettingChanged(const std::string& name, const std::string& value);
    void notifyHandsfreeStateChanged(bool enabled);

    void addFriendlyNameObserver(const std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface>& observer);

    /// Puts `count` keys into the cache.
    void fillCache(int count);

private:
    struct Change {
        std::string key;
        std::string value;
    };

    /// Everything up to the call of the road. Returns: false when the request is refused.
    bool accept(const std::string& request, Change& change);
    bool store(const std::string& key, const std::string& value);
    /// Compares, hands the value over, reports.
    template <typename HandOver>
    bool apply(const std::string& key, const std::string& value, HandOver handOver);
    void applySetting(const Change& change);
    bool switchHandsFree(const std::string& key, const std::string& value);
    std::string cached(const std::string& key);
    void report(const std::string& key, const std::string& from, const std::string& to);
    void count(const std::string& key, const std::string& value);
    void read(const std::string& key, std::map<std::string, std::string>& values);
    bool readStored(SettingsHandler::SettingsNamesType type, const std::string& key, std::string& value);
    void reply(const std::string& messageId, const std::map<std::string, std::string>& values);
    void readAll(std::map<std::string, std::string>& values);
    bool deviceMode(const char* name);
    void tellObservers(const std::string& friendlyName);

    QuietCollaborators& collaborators;
    std::map<SettingsHandler::SettingsNamesType, long> timestamps;
    std::map<std::string, std::string> cache;
    std::mutex mutex;
    std::unordered_set<std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface>> observers;
};

}  // namespace Benchmarks::Floor
