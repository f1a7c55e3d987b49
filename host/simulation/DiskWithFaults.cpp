#include "simulation/DiskWithFaults.h"

#include <system_error>
#include <utility>

#include "SettingsHandlerKit/InterceptedDisk.h"

namespace SettingsHost {

std::shared_ptr<SettingsHandlerKit::Disk> makeDiskWithFaults(std::shared_ptr<const Faults> faults,
                                                             std::function<void(std::chrono::milliseconds)> sleep,
                                                             std::shared_ptr<SettingsHandlerKit::Disk> disk) {
    using Operation = SettingsHandlerKit::InterceptedDisk::Operation;
    const auto intercept = [on = std::move(faults), block = std::move(sleep)](Operation operation) -> std::error_code {
        if (on->isOn(Fault::STORAGE_SLOW) && operation == Operation::FLUSH) {
            block(on->timeOf(Fault::STORAGE_SLOW));
        }
        if (on->isOn(Fault::STORAGE_FAILING)) {
            return std::make_error_code(std::errc::io_error);
        }
        if (on->isOn(Fault::STORAGE_FULL) && operation == Operation::WRITE) {
            return std::make_error_code(std::errc::no_space_on_device);
        }
        return {};
    };
    return std::make_shared<SettingsHandlerKit::InterceptedDisk>(intercept, std::move(disk));
}

}  // namespace SettingsHost
