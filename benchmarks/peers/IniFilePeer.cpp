#include <QSettings>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

#include "Peer.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

namespace {

void sync(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool done = descriptor >= 0 && ::fsync(descriptor) == 0;
    ::close(descriptor);
    if (!done) {
        throw std::runtime_error(path + " was not flushed");
    }
}

class IniFileSetter : public Setter {
public:
    IniFileSetter(const TestSupport::TemporaryDirectory& folder, bool synced)
        : directory(folder.path().string()),
          file(folder / "settings.ini"),
          settings(QString::fromStdString(file), QSettings::IniFormat),
          isSynced(synced) {}

    void set(const std::string& value) override {
        settings.setValue(QStringLiteral("deviceName"), QString::fromStdString(value));
        settings.sync();
        if (settings.status() != QSettings::NoError) {
            throw std::runtime_error(file + " was not written");
        }
        if (isSynced) {
            sync(file);
            sync(directory);
        }
    }

private:
    std::string directory;
    std::string file;
    QSettings settings;
    bool isSynced;
};

class IniFilePeer : public Peer {
public:
    IniFilePeer(const std::filesystem::path& parent, bool synced) : folder(parent), isSynced(synced) {}

    std::unique_ptr<Setter> connect() const override { return std::make_unique<IniFileSetter>(folder, isSynced); }
    bool tellsOthers() const override { return false; }
    void observe(const Report& /*report*/) const override {}

private:
    TestSupport::TemporaryDirectory folder;
    bool isSynced;
};

}  // namespace

std::unique_ptr<Peer> iniFilePeer(const std::filesystem::path& parent, bool isSynced) {
    return std::make_unique<IniFilePeer>(parent, isSynced);
}

}  // namespace Benchmarks
