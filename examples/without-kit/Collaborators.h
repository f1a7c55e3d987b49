#pragma once

#include <iostream>
#include <map>
#include <string>
#include <unordered_map>

#include "DeviceAbstractionLayer/AppLaunch.h"
#include "Metrics/MetricsDelegateInterface.h"
#include "VessaNativeCommon/FriendlyNameObserverInterface.h"

/// Counts the changes of each setting. Leaves out the value, which follows the first underscore and may be private.
class ChangeCounts : public Metrics::MetricsDelegateInterface {
public:
    void recordEvent(const std::string&, const std::string&,
                     const std::unordered_map<std::string, std::string>&) override {}
    void recordCounter(const std::string& name, int, int, double) override { ++counts[name.substr(0, name.find('_'))]; }

    std::map<std::string, int> counts;
};

class Launcher : public DeviceAbstractionLayer::AppLaunch {
public:
    bool launchApp(std::string appName, std::string) override {
        std::cout << "launching " << appName << std::endl;
        return true;
    }
};

/// Announces the television under its new name, in a network say.
class Announcer : public VessaNativeCommon::FriendlyNameObserverInterface {
public:
    void notifyFriendlyNameChanged(const std::string& friendlyName) override {
        std::cout << "announcing " << friendlyName << std::endl;
    }
};
