#include "app/SafeApplication.h"

#include <gtest/gtest.h>

#include <QByteArray>

// Widget tests share one application object. It is a SafeApplication, so that tests of the
// exception guard exercise the real notify(). The offscreen platform needs no display.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", QByteArray("offscreen"));
    ::testing::InitGoogleTest(&argc, argv);
    Tessaly::SafeApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
