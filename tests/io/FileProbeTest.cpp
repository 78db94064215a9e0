#include "io/FileProbe.h"

#include "io/ColumnCheck.h"
#include "io/VQDReader.h"
#include "support/FixtureWriter.h"
#include "support/StandInProgram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <string>

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

    for (const char* name : { "crash-4b7570dd.vqd", "crash-7955c795.vqd" }) {
        failure.clear();
        EXPECT_FALSE(FileProbe::check(hostileFile(name), &failure)) << name;
        EXPECT_EQ(failure, "The file is damaged: reading its structure crashed the file check.") << name;
    }
    EXPECT_FALSE(FileProbe::check(hostileFile("timeout-01fa60.vqd"), &failure));
    EXPECT_EQ(failure, "Refused by the file check: reading its structure took longer than 4 s.");
    EXPECT_FALSE(FileProbe::check(dir.filePath("missing.vqd"), &failure, FileProbe::Scope::Columns));
    EXPECT_EQ(failure, "The file's structure is damaged: the HDF5 library cannot open it.");

    // Without a probe program files are opened unprobed.
    FileProbe::setProgram(dir.filePath("no-such-probe"));
    EXPECT_TRUE(FileProbe::check(hostileFile("crash-7955c795.vqd")));
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    FileProbe::setTimeLimit(15000);
}

// The column check runs its probes in parallel and refuses a damaged file with the same words as a
// single probe; a probe that ends soundly without handing anything over leaves the reading to the
// program.
TEST(FileProbe, TheColumnCheckRefusesDamagedFilesAsOneProbeDoes)
{
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    FileProbe::setTimeLimit(2000);
    QTemporaryDir dir;
    const QString sound = dir.filePath("sound.vqd");
    Testing::FixtureWriter(sound.toStdString())
        .column<double>("area_um", { 1, 2 })
        .column<double>("deform", { 0.1, 0.2 })
        .stringAttribute("setup:module composition", "Vortiq")
        .close();
    struct Case
    {
        QString path;
        QString failure;
    };
    const Case cases[] = {
        { hostileFile("crash-4b7570dd.vqd"),
            "The file is damaged: reading its columns crashed the file check." },
        { hostileFile("crash-7955c795.vqd"),
            "The file is damaged: reading its columns crashed the file check." },
        { hostileFile("timeout-01fa60.vqd"),
            "Refused by the file check: reading its columns took longer than 2 s." },
        { dir.filePath("missing.vqd"), "The file's structure is damaged: the HDF5 library cannot open it." },
    };
    for (const Case& c : cases) {
        VQDReader reader;
        QString failure;
        EXPECT_FALSE(ColumnCheck::run(c.path, reader, &failure)) << c.path.toStdString();
        EXPECT_EQ(failure, c.failure) << c.path.toStdString();
    }

    const QString quiet = Testing::writeStandInProgram(dir.filePath("quiet-probe.sh"), "exit 0\n");
    FileProbe::setProgram(quiet);
    VQDReader reader;
    ASSERT_TRUE(reader.open(sound.toStdString()));
    QString failure = QStringLiteral("unchanged");
    EXPECT_TRUE(ColumnCheck::run(sound, reader, &failure));
    EXPECT_TRUE(failure.isEmpty());
    EXPECT_FALSE(reader.isFeatureCached("deform"));
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    ASSERT_TRUE(ColumnCheck::run(sound, reader, &failure));
    EXPECT_TRUE(reader.isFeatureCached("deform"));
    EXPECT_TRUE(reader.isFeatureCached("area_um"));
    FileProbe::setTimeLimit(15000);
}

// What can be told without the library: a path that is no readable file, or a file without the
// signature that every HDF5 file has at its start or behind a user block.
TEST(FileProbe, FilesThatCannotBeHdf5AreToldApartBeforeAnyProbe)
{
    QTemporaryDir dir;
    const auto write = [&dir](const char* name, const QByteArray& bytes) {
        QFile file(dir.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    };
    const QByteArray signature("\x89HDF\r\n\x1a\n", 8);
    const QString sound = dir.filePath("sound.vqd");
    Testing::FixtureWriter(sound.toStdString()).column<double>("deform", { 0.1 }).close();
    QFile soundFile(sound);
    ASSERT_TRUE(soundFile.open(QIODevice::ReadOnly));
    const QByteArray soundBytes = soundFile.readAll();

    struct Case
    {
        QString path;
        QString refusal;
    };
    const Case cases[] = {
        { dir.filePath("missing.vqd"), "The file cannot be read: it does not exist." },
        { dir.path(), "The file cannot be read: it is a folder." },
        { write("empty.vqd", QByteArray()), "This is not an HDF5 file." },
        { write("text.vqd", "just some text, long enough to hold a signature"), "This is not an HDF5 file." },
        // Short of a whole signature, or a signature at an offset where no user block ends.
        { write("short.vqd", signature.left(7)), "This is not an HDF5 file." },
        { write("offset.vqd", QByteArray(300, ' ') + signature), "This is not an HDF5 file." },
        { sound, "" },
        { write("signature-only.vqd", signature), "" },
        { write("user-block.vqd", QByteArray(1024, 'u') + signature + QByteArray(100, '\0')), "" },
        { write("user-block-512.vqd", QByteArray(512, 'u') + soundBytes), "" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(FileProbe::refusalBeforeProbe(c.path), c.refusal) << c.path.toStdString();
}
