// Runs window tests on a desktop of a known size that nobody sees.
#include <gtest/gtest.h>

#include <QApplication>

#include "OffscreenDesktop.h"
#include "platform/linux/Entry.h"

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    const OffscreenDesktop screen;
    QApplication application(count, arguments);
    layer::prepareApplication();
    return RUN_ALL_TESTS();
}
