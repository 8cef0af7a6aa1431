#include <gmock/gmock.h>

#include <QApplication>

#include "backends/qt/QtValues.h"

int main(int argumentCount, char** arguments) {
  testing::InitGoogleMock(&argumentCount, arguments);
  // The build lists the tests, for which no application is needed.
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argumentCount, arguments);
  QApplication::setFont(pravik::interfaceFont());
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
