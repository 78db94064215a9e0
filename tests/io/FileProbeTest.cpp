#include "io/FileProbe.h"

#include "support/FixtureWriter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Tessaly;

namespace {
QString hostileFile(const char* name)
{
    const QString path = QStringLiteral(TESSALY_TEST_DATA "/hostile/") + name;
    EXPECT_TRUE(QFile::exists(path)) << name;
    return path;
}
} // namespace

// Files whose structure makes the HDF5 library itself crash or loop are found out by the probe,
// whose process takes the fault.
TEST(FileProbe, DamagedFilesFailTheProbeSoundFilesPass)
{
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    FileProbe::setTimeLimit(4000);
    QTemporaryDir dir;
    const QString sound = dir.filePath("sound.vqd");
    Testing::FixtureWriter(sound.toStdString())
        .column<double>("deform", { 0.1, 0.2 })
        .imageStack("image", 2, 3, 4, std::vector<std::uint8_t>(24, 7))
        .trace<std::int16_t>("fl1_raw", { { 1, 2 }, { 3, 4 } })
        .stringAttribute("setup:module composition", "Vortiq")
        .close();
    QString failure;
    EXPECT_TRUE(FileProbe::check(sound, &failure)) << failure.toStdString();

    EXPECT_TRUE(FileProbe::check(sound, &failure, FileProbe::Scope::Columns)) << failure.toStdString();

    for (const char* name : { "crash-3f6af080.vqd", "crash-4b7570dd.vqd", "crash-7955c795.vqd" }) {
        failure.clear();
        EXPECT_FALSE(FileProbe::check(hostileFile(name), &failure)) << name;
        EXPECT_EQ(failure, "the file's structure is damaged") << name;
    }
    EXPECT_FALSE(FileProbe::check(hostileFile("timeout-01fa60.vqd"), &failure));
    EXPECT_EQ(failure, "reading the file did not finish in time");
    EXPECT_FALSE(FileProbe::check(dir.filePath("missing.vqd"), &failure));
    EXPECT_EQ(failure, "the file could not be opened");

    // Without a probe program files are opened unprobed.
    FileProbe::setProgram(dir.filePath("no-such-probe"));
    EXPECT_TRUE(FileProbe::check(hostileFile("crash-7955c795.vqd")));
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    FileProbe::setTimeLimit(15000);
}
