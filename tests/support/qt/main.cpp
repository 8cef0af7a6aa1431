#include <gmock/gmock.h>

#include <QApplication>

#include "backends/qt/QtValues.h"

int main(int argumentCount, char** arguments) {
  testing::InitGoogleMock(&argumentCount, arguments);
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argumentCount, arguments);
  QApplication::setFont(pravik::interfaceFont());
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
