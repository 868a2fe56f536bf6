// The entry of the end-to-end tests.
#include "OrdinaryUser.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    corvatto::test::becomeOrdinaryUser(SCREENSHOT_DIRECTORY);
    // For pictures and processes only: the tests look at the desktop through connections of their own.
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
