#include "apps/scanner/Cameras.h"

#include <QDir>
#include <QFile>

namespace pravik::scanner {
namespace {

QString firstLine(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  return QString::fromUtf8(file.readLine()).trimmed();
}

}  // namespace

std::vector<Camera> listCameras() {
  const QDir devices(QStringLiteral("/sys/class/video4linux"));
  std::vector<Camera> cameras;
  for (const QString& device : devices.entryList({"video*"}, QDir::Dirs | QDir::System, QDir::Name)) {
    // A camera's further devices, such as that of its metadata, have an index above 0.
    if (firstLine(devices.filePath(device + "/index")) != QStringLiteral("0")) continue;
    const QString name = firstLine(devices.filePath(device + "/name"));
    cameras.push_back({("/dev/" + device).toStdString(), name.isEmpty() ? device : name});
  }
  return cameras;
}

}  // namespace pravik::scanner
