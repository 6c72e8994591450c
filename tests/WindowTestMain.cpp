// Runs window tests with the desktop connection that they need.
#include <gtest/gtest.h>

#include <QApplication>

#include "platform/linux/Entry.h"

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(count, arguments);
    layer::prepareApplication();
    return RUN_ALL_TESTS();
}
