#include "IniFilePeer.h"

#include <QSettings>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace Benchmarks {

namespace {

void synchronise(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool done = descriptor >= 0 && ::fsync(descriptor) == 0;
    ::close(descriptor);
    if (!done) {
        throw std::runtime_error(path + " was not made safe");
    }
}

class IniFileSetter : public Setter {
public:
    IniFileSetter(const TestSupport::TemporaryDirectory& folder, IniFilePeer::Safety chosen)
        : directory(folder.path().string()),
          file(folder / "settings.ini"),
          settings(QString::fromStdString(file), QSettings::IniFormat),
          safety(chosen) {}

    void set(const std::string& value) override {
        settings.setValue(QStringLiteral("deviceName"), QString::fromStdString(value));
        settings.sync();
        if (settings.status() != QSettings::NoError) {
            throw std::runtime_error(file + " was not written");
        }
        if (safety == IniFilePeer::Safety::SYNCHRONISED) {
            synchronise(file);
            synchronise(directory);
        }
    }

private:
    std::string directory;
    std::string file;
    QSettings settings;
    IniFilePeer::Safety safety;
};

}  // namespace

std::unique_ptr<Setter> IniFilePeer::connect() const {
    return std::make_unique<IniFileSetter>(folder, safety);
}

}  // namespace Benchmarks
