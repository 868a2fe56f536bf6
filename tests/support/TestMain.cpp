// The entry of every unit test program: GoogleTest inside a Qt application, in a home of its own.
#include "support/TemporaryHome.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const corvatto::test::TemporaryHome home; // nothing a test does reaches the user's files
    QApplication application(argc, argv);
    // Numbers and messages are compared as text.
    std::setlocale(LC_ALL, "C.UTF-8");
    return RUN_ALL_TESTS();
}
