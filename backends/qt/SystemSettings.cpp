#include "backends/qt/SystemSettings.h"

#include <QDesktopServices>
#include <QMessageBox>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

#include "backends/qt/QtValues.h"

namespace pravik {
namespace {

#if defined(Q_OS_WIN)
constexpr const char* settingsAddress = "ms-settings:privacy-webcam";
#elif defined(Q_OS_MACOS)
constexpr const char* settingsAddress = "x-apple.systempreferences:com.apple.preference.security?Privacy_Camera";
#else
constexpr const char* settingsAddress = nullptr;
#endif

/// The one desktop that has such a page.
bool openDesktopSettings() {
  const QString program = QStandardPaths::findExecutable(QStringLiteral("gnome-control-center"));
  return !program.isEmpty() && QProcess::startDetached(program, {QStringLiteral("camera")});
}

}  // namespace

void openCameraSettings(QWidget* parent) {
  if (settingsAddress != nullptr && QDesktopServices::openUrl(QUrl(QString::fromUtf8(settingsAddress)))) return;
  if (openDesktopSettings()) return;
  auto* box = new QMessageBox(parent);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setIcon(QMessageBox::Information);
  box->setText(inUserLanguage("请允许本程序使用相机", "Allow this program to use the camera"));
  box->setInformativeText(
      inUserLanguage("请检查相机是否已连接，以及当前用户是否属于 video 用户组。",
                     "Check that a camera is connected and that you belong to the group \"video\"."));
  box->open();
}

}  // namespace pravik
