// The desktop tests' main: a QApplication on the offscreen platform (no
// display needed) for the whole run, then every test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

int main(int argc, char** argv) {
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  ::setenv("NO_COLOR", "1", 1);
  QApplication application(argc, argv);
  ::testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
