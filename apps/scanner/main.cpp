#include <QApplication>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "apps/pravik/Installation.h"
#include "apps/pravik/ProgramMemory.h"
#include "apps/scanner/ScannerSettings.h"
#include "apps/scanner/ScannerWindow.h"
#include "apps/scanner/Texts.h"
#include "backends/qt/QtPlatform.h"
#include "backends/qt/QtValues.h"

namespace {

constexpr int noDisplay = pravik::cli::incompleteInstallation;

[[noreturn]] void endWithoutDisplay(const char* reason) {
  std::cerr << "pravik-scanner: there is no display to show a window on (" << reason
            << ").\nRun it in a desktop session, or use the command line without a window: pravik scan\n";
  std::_Exit(noDisplay);
}

/// Qt tells only through its log that no display answers, and would abort.
void endOnFatalMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtFatalMsg) endWithoutDisplay(message.section('\n', 0, 0).toUtf8().constData());
  if (type == QtCriticalMsg) std::cerr << "pravik-scanner: " << message.toStdString() << '\n';
}

void checkDisplay() {
#ifdef Q_OS_LINUX
  for (const char* variable : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
    if (const char* value = std::getenv(variable); value != nullptr && *value != '\0') return;
  endWithoutDisplay("neither DISPLAY nor WAYLAND_DISPLAY is set");
#endif
}

int runScanner(int argumentCount, char** arguments) {
  using namespace pravik::scanner;
  const auto read =
      readSettings(std::vector<std::string>(arguments + 1, arguments + argumentCount), std::cout, std::cerr);
  if (const int* status = std::get_if<int>(&read)) return *status;
  const auto& settings = std::get<ScannerSettings>(read);
  const std::vector<std::string> missing = pravik::cli::missingModels(settings.models);
  if (!missing.empty()) return pravik::cli::reportIncomplete(missing, std::cerr);
  pravik::OCRLogger::setSink([](std::string_view line) { std::cerr << line; });
  pravik::OCRLogger::setLevel(settings.logLevel);
  checkDisplay();
  qInstallMessageHandler(endOnFatalMessage);

  // NOLINTNEXTLINE(misc-const-correctness): runs as long as it lives, and is changed through its statics.
  QApplication application(argumentCount, arguments);
  QApplication::setApplicationName("pravik-scanner");
  QApplication::setFont(pravik::interfaceFont());
  useLanguage(settings.language);
  ScannerWindow window(settings, pravik::makeQtPlatform({.parts = {.modelDirectory = settings.models}}));
  int status = pravik::cli::allRecognized;
  if (settings.writesJson) {
    window.onRecord = [](const ScannedRecord& record) {
      std::cout << pravik::jsonText(record.answer) << '\n' << std::flush;
      QApplication::quit();
    };
    window.onNothing = [&settings, &status] {
      if (!settings.mode) return;
      status = pravik::cli::someNotRecognized;
      QApplication::quit();
    };
  }
  window.show();
  window.begin();
  QApplication::exec();
  return status;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  pravik::cli::returnLargeBlocks();
  try {
    return runScanner(argumentCount, arguments);
  } catch (const std::exception& error) {
    std::cerr << "pravik-scanner: " << error.what() << '\n';
    return pravik::cli::usageError;
  }
}
