#include "backends/qt/SystemSettings.h"

#include <QDesktopServices>
#include <QLocale>
#include <QMessageBox>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>
#include <algorithm>
#include <array>

namespace pravik {
namespace {

#if defined(Q_OS_WIN)
constexpr const char* settingsAddress = "ms-settings:privacy-webcam";
#elif defined(Q_OS_MACOS)
constexpr const char* settingsAddress = "x-apple.systempreferences:com.apple.preference.security?Privacy_Camera";
#else
constexpr const char* settingsAddress = nullptr;
#endif

struct SettingsProgram {
  const char* name;
  const char* page;
};
/// Of the desktops that have such a page.
constexpr std::array<SettingsProgram, 1> settingsPrograms{{{"gnome-control-center", "camera"}}};

bool startSettingsProgram() {
  return std::ranges::any_of(settingsPrograms, [](const SettingsProgram& program) {
    const QString path = QStandardPaths::findExecutable(QString::fromUtf8(program.name));
    return !path.isEmpty() && QProcess::startDetached(path, {QString::fromUtf8(program.page)});
  });
}

}  // namespace

void openCameraSettings(QWidget* parent) {
  if (settingsAddress != nullptr && QDesktopServices::openUrl(QUrl(QString::fromUtf8(settingsAddress)))) return;
  if (startSettingsProgram()) return;
  const bool isChinese = QLocale().language() == QLocale::Chinese;
  auto* box = new QMessageBox(parent);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setIcon(QMessageBox::Information);
  box->setText(isChinese ? QStringLiteral("请允许本程序使用相机")
                         : QStringLiteral("Allow this program to use the camera"));
  box->setInformativeText(
      isChinese ? QStringLiteral("请检查相机是否已连接，以及当前用户是否属于 video 用户组。")
                : QStringLiteral("Check that a camera is connected and that you belong to the group \"video\"."));
  box->open();
}

}  // namespace pravik
