#include "io/FileCheck.h"

#include "support/FixtureWriter.h"
#include "support/StandInProgram.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

// Probe programs that stand in for the real one: one that never ends, one that says the file can't
// be opened, one that crashes.
class FileCheckTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        sound = folder.filePath("sound.vqd");
        Testing::FixtureWriter(sound.toStdString()).column<double>("deform", { 0.1 }).close();
    }
    void TearDown() override
    {
        FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
        FileProbe::setTimeLimit(15000);
    }

    QString probe(const char* name, const QByteArray& script)
    {
        return Testing::writeStandInProgram(folder.filePath(name), script);
    }

    QTemporaryDir folder;
    QString sound;
};

} // namespace

// The check reports by a signal, so the event loop runs on while a probe hangs, until the time limit
// ends it.
TEST_F(FileCheckTest, AHangingProbeIsStoppedAtTheTimeLimitWhileTheEventLoopRuns)
{
    FileProbe::setProgram(probe("slow.sh", "exec sleep 60\n"));
    FileProbe::setTimeLimit(1500);
    FileCheck check;
    QSignalSpy finished(&check, &FileCheck::finished);
    int ticks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&ticks] { ++ticks; });
    ticker.start(50);

    check.start(sound);
    EXPECT_TRUE(check.isRunning());
    EXPECT_EQ(finished.count(), 0);
    ASSERT_TRUE(finished.wait(20000));
    EXPECT_GT(ticks, 0) << "the event loop was blocked by the probe";
    EXPECT_FALSE(check.isRunning());
    EXPECT_EQ(finished.at(0).at(0).toBool(), false);
    EXPECT_EQ(finished.at(0).at(1).toString(),
        "Refused by the file check: reading its structure took longer than 2 s.");
}

TEST_F(FileCheckTest, ACancelledCheckEndsAtOnceAndAnotherCanFollow)
{
    FileProbe::setProgram(probe("slow.sh", "exec sleep 60\n"));
    FileCheck check;
    QSignalSpy finished(&check, &FileCheck::finished);
    check.start(sound);
    check.cancel();
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.at(0).at(1).toString(), FileProbeTexts::cancelled);
    EXPECT_FALSE(check.isRunning());
    // Cancelling again is nothing.
    check.cancel();
    EXPECT_EQ(finished.count(), 1);

    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    check.start(sound);
    ASSERT_TRUE(finished.wait(20000));
    EXPECT_EQ(finished.at(1).at(0).toBool(), true);
    EXPECT_EQ(finished.at(1).at(1).toString(), "");
}

TEST_F(FileCheckTest, EachWayOfFailingHasItsReason)
{
    struct Case
    {
        const char* script;
        QString reason;
    };
    const Case cases[] = {
        { "exit 0\n", "" },
        { "exit 3\n", FileProbeTexts::cannotOpen },
        { "echo 'detail of the fault' >&2\nkill -SEGV $$\n",
            "The file is damaged: reading its structure crashed the file check." },
        // A sanitizer ends the process by an exit code of its own.
        { "exit 1\n", "The file is damaged: reading its structure crashed the file check." },
    };
    int index = 0;
    for (const Case& c : cases) {
        FileProbe::setProgram(probe(("probe" + std::to_string(index++) + ".sh").c_str(), c.script));
        FileCheck check;
        QSignalSpy finished(&check, &FileCheck::finished);
        check.start(sound);
        ASSERT_TRUE(finished.wait(20000)) << c.script;
        EXPECT_EQ(finished.at(0).at(0).toBool(), c.reason.isEmpty()) << c.script;
        EXPECT_EQ(finished.at(0).at(1).toString(), c.reason) << c.script;
    }
}

// What can't be an HDF5 file is decided without a probe, but reported the same way: after start
// has returned.
TEST_F(FileCheckTest, FilesThatCannotBeHdf5AreRefusedWithoutAProbe)
{
    FileProbe::setProgram(probe("never.sh", "exec sleep 60\n"));
    FileCheck check;
    QSignalSpy finished(&check, &FileCheck::finished);
    check.start(folder.filePath("missing.vqd"));
    EXPECT_TRUE(check.isRunning());
    EXPECT_EQ(finished.count(), 0);
    ASSERT_TRUE(finished.wait(5000));
    EXPECT_EQ(finished.at(0).at(1).toString(), "The file cannot be read: it does not exist.");

    // Without a probe program a file is passed unprobed.
    FileProbe::setProgram(folder.filePath("no-such-probe"));
    check.start(sound);
    ASSERT_TRUE(finished.wait(5000));
    EXPECT_EQ(finished.at(1).at(0).toBool(), true);
}
