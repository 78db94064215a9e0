#include <QString>
#include <QThreadPool>
#include <gtest/gtest.h>

// Tests of the core library run without an application object.
int main(int argc, char** argv)
{
    // Qt sets up its text codecs the first time any thread converts to or from the local 8-bit
    // encoding, and every new pool thread does so to name itself. A program converts on its main
    // thread first (file names, the environment); so do the tests, or pool threads that start up
    // together would set the codecs up at once, and race the process's end to it.
    (void)QString::fromLatin1("Tessaly").toLocal8Bit();
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    // Pool threads still starting up must not meet the teardown of Qt's statics.
    QThreadPool::globalInstance()->waitForDone();
    return result;
}
