#pragma once

#include <iostream>
#include <memory>
#include <string>

#include "Device.h"
#include "DeviceAbstractionLayer/AppLaunch.h"
#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Server.h"
#include "SettingsHandlerKit/Storage.h"
#include "VoiceSdk.h"

class Launcher : public DeviceAbstractionLayer::AppLaunch {
public:
    bool launchApp(std::string appName, std::string) override {
        std::cout << "launching " << appName << std::endl;
        return true;
    }
};

/// The whole service but what drives its loop. Members are destroyed in reverse order: the handler before its storage.
class Television {
public:
    /// `folder` holds socket and database, `pages` the settings pages.
    Television(const std::string& folder, const std::string& pages)
        : server(optionsFor(folder, pages)), storage(folder + "/settings.db") {
        device->subscribe(handler);
        server.onRollBack([this] { device->readState(); });
    }

    /// What somebody does at the device: clients are told that it was the device.
    void pressHandsFree() {
        server.perform([this] { device->toggleHandsFree(); });
    }

    SettingsHandlerKit::Server server;

private:
    static SettingsHandlerKit::ServerOptions optionsFor(const std::string& folder, const std::string& pages) {
        SettingsHandlerKit::ServerOptions options;
        options.version = "television 1.0";
        options.socketPath = folder + "/settings.sock";
        options.listen = "127.0.0.1:0";
        options.pagesFolder = pages;
        return options;
    }

    SettingsHandlerKit::Storage storage;
    std::unique_ptr<SettingsHandlerKit::StateStore> state = storage.state("television");
    std::shared_ptr<Device> device = std::make_shared<Device>(*state);
    std::shared_ptr<SettingsHandlerKit::CheckedSettingsHandler> handler =
        server.createHandler(storage, std::make_shared<VoiceSdk>(*state, storage, device, server.valueObserver()),
                             std::make_shared<Launcher>(), device);
};
