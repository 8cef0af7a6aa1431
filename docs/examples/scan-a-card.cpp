// Shows the scanner over a window of its own and awaits the card: scan-a-card [CAMERA], a number or a video file.
#include <QApplication>
#include <QLabel>
#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <iostream>

#include "Platform/DispatchExecutor.h"
#include "Pravik.h"
#include "backends/qt/QtPlatform.h"
#include "backends/qt/QtStage.h"

namespace {

pravik::Task<void> scan(QLabel& window, std::shared_ptr<pravik::QtStage> stage) {
  try {
    const auto scanned = co_await pravik::PravikSDK::shared().scanBankCard(stage);
    window.setText(QString::fromStdString(scanned.info.cardNumber));
  } catch (const pravik::OCRError& error) {
    window.setText(QString::fromStdString(error.errorDescription()));
  }
  std::cout << window.text().toStdString() << '\n';
  QApplication::quit();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const QApplication application(argumentCount, arguments);
  pravik::Platform& platform = pravik::Platform::current();
  platform = pravik::makeQtPlatform({.camera = argumentCount > 1 ? arguments[1] : "0"});
  QLabel window;
  window.resize(960, 540);
  window.show();
  const auto stage = std::make_shared<pravik::QtStage>(window, platform);
  asio::co_spawn(pravik::DispatchExecutor(platform.dispatch, &pravik::Dispatch::async), scan(window, stage),
                 asio::detached);
  return QApplication::exec();
}
