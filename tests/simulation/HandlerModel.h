#pragma once

#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/ReferenceModel.h"

namespace SettingsSimulation {

/// What is on the disk: the values of the library, and those of the simulated SDK and device.
struct Durable {
    std::map<std::string, std::string> settings;
    std::map<std::string, std::string> simulation;

    bool operator==(const Durable& other) const { return settings == other.settings && simulation == other.simulation; }
};

/// Which uses of the disk fail while one frame is handled, counted from 0.
struct DiskFate {
    static constexpr long all = std::numeric_limits<long>::max();

    long first = 0;
    long count = 0;
    /// The values of the library are in SQLite's memory: their pages need not be read.
    bool sparesSettings = false;
    /// SQLite rolls a transaction back at once when something fails in it; then each further change is refused.
    bool endsTransaction = false;

    bool fails(long use, bool isOfSettings) const {
        return use >= first && use - first < count && !(isOfSettings && sparesSettings);
    }
};

/// The model of the handler with the reference host's storage, voice SDK and device. It can be copied.
class HandlerModel : public SettingsHandlerFuzz::ReferenceModel {
public:
    HandlerModel();

    /// As a host does that starts: reads everything, and forgets the rest.
    void start(const Durable& onDisk);

    const Durable& durable() const { return disk; }
    /// What may be on the disk after a crash instead: a refused write that reached it all the same.
    const std::vector<Durable>& ghosts() const { return refusedWrites; }
    void addGhosts(const std::vector<Durable>& more);

    /// For the next frame. `keepsSteps`: `steps` has what was on the disk after each change.
    void begin(const DiskFate& fateOfDisk, bool keepsSteps, bool mayLeaveGhosts);
    /// How many uses of the disk the last frame made.
    long diskUses() const { return uses; }
    /// Was there a transaction in it?
    bool hadTransaction() const { return hasTransaction; }
    const std::vector<Durable>& steps() const { return durableSteps; }

    /// @name Faults that are on, with their values
    /// @{
    bool isOn(const std::string& fault) const { return faults.count(fault) > 0; }
    std::string faultValue(const std::string& fault) const;
    long faultTime(const std::string& fault) const;
    std::map<std::string, std::string> faults;
    /// @}

protected:
    void record(const std::string& /*entry*/) override {}
    std::string storedValue(const std::string& key) override;
    bool storeValue(const std::string& key, const std::string& value) override;
    bool clearStorage() override;
    std::string deviceMode(const std::string& infoKey) override;
    bool applySetting(const std::string& key, const std::string& value) override;
    void switchHandsFree(bool enabled) override;
    void useLocales(const std::vector<std::string>& locales) override;
    void useTimezone(const std::string& timezone) override;
    void launchSettings() override { launched = true; }

    /// The value of a setting changed at its owner.
    virtual void valueChanged(const std::string& key) = 0;

    bool setMode(const std::string& infoKey, bool enabled);
    bool useCaptions(bool enabled);
    bool useDoNotDisturb(bool enabled);
    bool applyFriendlyName(const std::string& name);
    bool saveLocales(const std::vector<std::string>& locales);
    bool saveTimezone(const std::string& timezone);
    /// Returns: false when it could not be saved.
    bool changeByItself(const std::string& key);
    /// The SDK and the device read their state again.
    void readState();

    /// @name A transaction
    /// @{
    void beginTransaction();
    /// Returns: false when it was rolled back.
    bool commit();
    /// @}
    bool readsDisk(bool isOfSettings = false);
    bool writesDisk();
    void changedDisk();
    long persisted() const { return changes; }

    bool launched = false;
    /// Has an operation of the storage succeeded in this frame?
    bool storageWorks = false;

private:
    bool put(std::map<std::string, std::string> Durable::*table, const std::string& key, const std::string& value);
    bool isRefused(const std::string& key) const;

    Durable disk;
    std::vector<Durable> refusedWrites;
    std::optional<Durable> beforeTransaction;
    bool isDirty = false;
    bool isBroken = false;
    bool isEnded = false;
    bool hasTransaction = false;

    DiskFate fate;
    bool keepsSteps = false;
    bool leavesGhosts = false;
    long uses = 0;
    long changes = 0;
    std::vector<Durable> durableSteps;
};

}  // namespace SettingsSimulation
