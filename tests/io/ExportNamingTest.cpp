#include "io/ExportNaming.h"

#include "io/PartialFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <set>

using namespace Tessaly;

namespace {

std::string readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string("<missing>");
}

void writeAll(const std::string& path, const char* text)
{
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

} // namespace

TEST(ExportNaming, FileNamesTakeThePrefixAndTheFormatsSuffix)
{
    struct Case
    {
        const char* source;
        ExportFormat format;
        const char* expected;
    };
    const Case cases[] = {
        { "a.vqd", ExportFormat::MeasurementFile, "TSYexport_a.vqd" },
        { "a.vqd", ExportFormat::Table, "TSYexport_a.tsv" },
        { "a.VQD", ExportFormat::Video, "TSYexport_a.avi" },
        // Only the ending ".vqd" is cut; other endings stay in front of the new suffix.
        { "run.h5", ExportFormat::Table, "TSYexport_run.h5.tsv" },
        { "run.h5", ExportFormat::MeasurementFile, "TSYexport_run.h5" },
        { "my.cells.vqd", ExportFormat::Video, "TSYexport_my.cells.avi" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(exportFileName(c.source, c.format), c.expected) << c.source;
}

TEST(ExportNaming, ATakenNameGetsTheFirstFreeNumber)
{
    std::set<std::string> taken;
    auto isTaken = [&taken](const std::string& path) { return taken.count(path) > 0; };
    EXPECT_EQ(uniqueExportPath("/d", "TSYexport_a.tsv", isTaken), "/d/TSYexport_a.tsv");
    taken = { "/d/TSYexport_a.tsv" };
    EXPECT_EQ(uniqueExportPath("/d/", "TSYexport_a.tsv", isTaken), "/d/TSYexport_a_2.tsv");
    taken = { "/d/TSYexport_a.tsv", "/d/TSYexport_a_2.tsv", "/d/TSYexport_a_3.tsv" };
    EXPECT_EQ(uniqueExportPath("/d", "TSYexport_a.tsv", isTaken), "/d/TSYexport_a_4.tsv");
    // Split at the last dot; a name without a dot takes the number at its end.
    taken = { "/d/TSYexport_my.cells.avi", "/d/TSYexport_x" };
    EXPECT_EQ(uniqueExportPath("/d", "TSYexport_my.cells.avi", isTaken), "/d/TSYexport_my.cells_2.avi");
    EXPECT_EQ(uniqueExportPath("/d", "TSYexport_x", isTaken), "/d/TSYexport_x_2");
}

TEST(PartialFile, OnlyACommittedFileAppearsUnderItsFinalName)
{
    QTemporaryDir folder;
    const std::string finalPath = folder.filePath(QStringLiteral("TSYexport_a.avi")).toStdString();
    std::string temporary;
    {
        PartialFile target(finalPath);
        temporary = target.path();
        // Hidden, beside the final file, with the same suffix for writers that go by it.
        EXPECT_EQ(QFileInfo(QString::fromStdString(temporary)).absolutePath(), folder.path());
        EXPECT_TRUE(QFileInfo(QString::fromStdString(temporary)).fileName().startsWith(QChar('.')));
        EXPECT_EQ(temporary.substr(temporary.size() - 4), ".avi");
        writeAll(temporary, "half");
    }
    // Not committed: nothing is left, neither under the final name nor the temporary one.
    EXPECT_TRUE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());

    {
        PartialFile target(finalPath);
        writeAll(target.path(), "whole");
        EXPECT_TRUE(target.commit());
    }
    EXPECT_EQ(readAll(QString::fromStdString(finalPath)), "whole");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

TEST(PartialFile, AFileThatAppearedMeanwhileIsNeverReplaced)
{
    QTemporaryDir folder;
    const std::string finalPath = folder.filePath(QStringLiteral("TSYexport_a.tsv")).toStdString();
    PartialFile target(finalPath);
    writeAll(target.path(), "ours");
    writeAll(finalPath, "the user's");
    EXPECT_FALSE(target.commit());
    EXPECT_EQ(readAll(QString::fromStdString(finalPath)), "the user's");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}
