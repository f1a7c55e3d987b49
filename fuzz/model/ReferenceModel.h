#pragma once

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace SettingsHandlerFuzz {

/// The state of the handler's collaborators, as far as its behaviour depends on it.
struct Surroundings {
    std::map<std::string, std::string> stored;
    bool refusesWrites = false;
    bool refusesRemoval = false;
    bool refusesClearing = false;

    std::vector<std::string> locales{"en-US"};
    std::string timezone = "America/Vancouver";
    bool captionsEnabled = false;
    bool doNotDisturbEnabled = false;
    bool refusesSettings = false;

    std::map<std::string, std::string> deviceInfo;
};

/// What a request of type 19, 22 or 24 led to, as an answer tells it.
struct Answer {
    std::string outcome = "done";
    /// Empty unless it was refused.
    std::string reason;
    std::optional<std::string> key;
    bool applied = true;
    /// Did the storage take a value that is not empty?
    bool stored = false;
    /// Of a stale request.
    std::optional<long> newest;
};

/// An independent, simple implementation of the handler's operations, to be compared with the library. It predicts
/// results, cache, stored values and each entry of the journal. It shares no code with the library; both use the parser
/// of the JSON library and its escaping of strings.
///
/// Observers are numbers; nothing stands for a null pointer. The order of all keys is that of the library's table,
/// because it is a hash table.
///
/// What the handler asks of its collaborators is virtual: a model with other collaborators than test doubles overrides
/// it.
class ReferenceModel {
public:
    using Observer = std::optional<int>;
    /// Observers with this number remove themselves when they are notified.
    static constexpr int selfRemover = 3;

    explicit ReferenceModel(std::vector<std::string> keysInTableOrder)
        : allKeys(std::make_shared<const std::vector<std::string>>(std::move(keysInTableOrder))) {}
    ReferenceModel(const ReferenceModel&) = default;
    ReferenceModel& operator=(const ReferenceModel&) = default;
    virtual ~ReferenceModel() = default;

    Surroundings around;

    /// Removes and returns the entries so far.
    std::vector<std::string> take();

    void initializeSettings();
    void migrateExistingDeviceSettings();
    std::map<std::string, std::string> getSettings(const std::vector<std::string>& names);
    std::map<std::string, std::string> getCurrentSettingsMap();
    bool setSetting(const std::string& key, const std::string& value);
    /// Handles a request of `type`.
    void request(int type, const std::string& text);
    /// Of the request that was handled last.
    Answer answer() const { return lastAnswer; }
    /// Of a SetSettings request that does not reach the handler, because its value would end the process.
    Answer answerToRejected(const std::string& text) const;

    /// By key; unknown keys share the empty key.
    const std::map<std::string, long>& timestamps() const { return newestTimestamps; }

    void notifyLocaleChange(const std::string& locale);
    void notifyLocalesChange(const std::vector<std::string>& locales);
    void notifyTimezoneChange(const std::string& timezone);
    void notifySystemSettingChanged(const std::string& name, const std::string& value);
    void notifyHandsfreeStateChanged(bool enabled);

    void addLocaleObserver(Observer observer);
    void addFriendlyNameObserver(Observer observer);
    void removeFriendlyNameObserver(Observer observer);
    void addEntitlementObserver(Observer observer);
    void removeEntitlementObserver(Observer observer);

protected:
    /// @name Collaborators
    /// @{
    virtual void record(const std::string& entry);
    virtual std::string storedValue(const std::string& key);
    virtual bool storeValue(const std::string& key, const std::string& value);
    virtual bool clearStorage();
    virtual std::string deviceMode(const std::string& infoKey);
    virtual bool applySetting(const std::string& key, const std::string& value);
    virtual void switchHandsFree(bool enabled);
    virtual void useLocales(const std::vector<std::string>& locales);
    virtual void useTimezone(const std::string& timezone);
    virtual void launchSettings();
    /// An event with this payload.
    virtual void sendEvent(const std::string& key, const std::string& payload);
    virtual void sendReply(const std::string& messageId, const std::string& payload);
    /// @}

    const std::map<std::string, std::string>& cachedValues() const { return cache; }
    /// As after a restart.
    void forgetTimestamps() { newestTimestamps.clear(); }

private:
    void line(int level, const std::string& text);

    void refuse(const std::string& reason);
    std::optional<long> newerThan(const std::string& key, long timestamp) const;

    void getRequest(const std::string& text);
    void setRequest(const std::string& text);
    void selectionRequest(const std::string& text);
    void logOutRequest();

    std::string ownersValue(const std::string& key);
    bool store(const std::string& key, const std::string& value);
    bool apply(const std::string& key, const std::string& value);

    bool setLocale(const std::string& value);
    bool setTimezone(const std::string& value);
    bool setEntitlement(const std::string& value);
    bool setApplied(const std::string& key, const std::string& value);
    bool setStored(const std::string& key, const std::string& value);
    std::string cached(const std::string& key) const;
    void changed(const std::string& key, const std::string& from, const std::string& to);
    void count(const std::string& key, const std::string& value);

    void add(std::set<int>& registry, Observer observer, const std::string& operation);
    void remove(std::set<int>& registry, Observer observer, const std::string& operation);
    void tell(std::set<int>& registry, bool mayRemoveThemselves, const std::string& what);

    /// Copies share them, since fuzz targets copy a model for each input.
    std::shared_ptr<const std::vector<std::string>> allKeys;
    std::vector<std::string> journal;
    std::map<std::string, std::string> cache;
    /// By key; unknown keys share the empty key.
    std::map<std::string, long> newestTimestamps;
    Answer lastAnswer;
    std::set<int> localeObservers;
    std::set<int> friendlyNameObservers;
    std::set<int> entitlementObservers;
};

}  // namespace SettingsHandlerFuzz
