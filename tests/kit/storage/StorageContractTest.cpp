#include "SettingsHandlerKit/Storage.h"
#include "SettingsHandlerTesting/contracts/StorageContract.h"
#include "SettingsHandlerTesting/kit/contracts/LegacyValueStorageContract.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "support/TemporaryDirectory.h"

/// The storage keeps the contract that every implementer can run. It belongs to one thread, so it does not offer itself
/// to others.
namespace SettingsHandlerTesting {

struct StorageMaker {
    SettingsHostTests::LogRecording log;
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    TestSupport::TemporaryDirectory folder;
    std::unique_ptr<SettingsHandlerKit::Storage> opened;

    StorageMaker() { reopen(); }
    SDKWrapper::StorageManagerInterface& storage() { return *opened; }
    void reopen() {
        opened.reset();
        opened = std::make_unique<SettingsHandlerKit::Storage>(folder / "settings.db", disk);
    }
    void failWrites(bool fail) { fail ? disk->fillUpFrom(1) : disk->work(); }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Storage, StorageContract, StorageMaker, NumberedNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Storage, LegacyValueStorageContract, StorageMaker, NumberedNames);

}  // namespace SettingsHandlerTesting
