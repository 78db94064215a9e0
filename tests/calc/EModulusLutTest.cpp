#include "calc/EModulusLut.h"

#include "calc/LookupTableCheck.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

class EModulusLutFile : public ::testing::Test
{
protected:
    QString write(const QByteArray& text, const QString& name = QStringLiteral("table.txt"))
    {
        const QString path = folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path;
    }

    EModulusLut read(const QByteArray& text)
    {
        EModulusLut lut;
        EXPECT_TRUE(readEModulusLut(write(text), lut));
        return lut;
    }

    QTemporaryDir folder;
};

const QByteArray rows = "area_um deform emodulus\n"
                        "10 0.01 1.5\n"
                        "20 0.02 2.5\n"
                        "30 0.03 3.5\n";

} // namespace

TEST_F(EModulusLutFile, MetadataBlockReplacesTheReferenceConditions)
{
    const EModulusLut lut = read("# BEGIN METADATA\n"
                                 "# {\n"
                                 "#   \"channel_width\": 30.0,\n"
                                 "#\t\"flow_rate\": 0.32,\n"
                                 "#   \"fluid_viscosity\": 15.0,\n"
                                 "#   \"identifier\": \"FEM run 7\"\n"
                                 "# }\n"
                                 "# END METADATA\n"
        + rows);
    EXPECT_EQ(lut.channelWidth, 30.0);
    EXPECT_EQ(lut.flowRate, 0.32);
    EXPECT_EQ(lut.viscosity, 15.0);
    EXPECT_TRUE(lut.metadataText.contains(QStringLiteral("FEM run 7")));
    EXPECT_EQ(lut.area, (std::vector<double> { 10.0, 20.0, 30.0 }));
    EXPECT_EQ(lut.emodulus, (std::vector<double> { 1.5, 2.5, 3.5 }));
}

TEST_F(EModulusLutFile, DefaultsWhereTheFileSaysNothing)
{
    struct Case
    {
        const char* what;
        QByteArray head;
        double width, flow, viscosity;
    };
    const Case cases[] = {
        { "no block", "# a table without metadata\n", 20.0, 0.16, 1.002 },
        { "one key", "# BEGIN METADATA\n# {\"flow_rate\": 0.08}\n# END METADATA\n", 20.0, 0.08, 1.002 },
        { "a key that is no number", "# BEGIN METADATA\n# {\"channel_width\": \"30\"}\n# END METADATA\n",
            20.0, 0.16, 1.002 },
        { "broken JSON", "# BEGIN METADATA\n# {\"channel_width\": 30,\n# END METADATA\n", 20.0, 0.16, 1.002 },
        { "an array", "# BEGIN METADATA\n# [30, 0.1]\n# END METADATA\n", 20.0, 0.16, 1.002 },
        // A second BEGIN starts afresh: only what follows it counts.
        { "restarted block",
            "# BEGIN METADATA\n# {\"flow_rate\": 9,\n# BEGIN METADATA\n# {\"fluid_viscosity\": 2}\n"
            "# END METADATA\n",
            20.0, 0.16, 2.0 },
    };
    for (const Case& c : cases) {
        const EModulusLut lut = read(c.head + rows);
        EXPECT_EQ(lut.channelWidth, c.width) << c.what;
        EXPECT_EQ(lut.flowRate, c.flow) << c.what;
        EXPECT_EQ(lut.viscosity, c.viscosity) << c.what;
        EXPECT_EQ(lut.area.size(), 3u) << c.what;
    }
}

TEST_F(EModulusLutFile, HeaderCommentsAndRows)
{
    // The commented line names "deform" but is a comment; the real header follows it. A later line
    // naming a column is a row like any other and, having no numbers, is dropped.
    const EModulusLut lut = read("# columns: area deform emodulus\n"
                                 "\n"
                                 "   \n"
                                 "area deform E\n"
                                 "1e1\t0.01   1.5 extra fields 9\n"
                                 "20 0.02\n"
                                 "20 0.02 nan\n"
                                 "20 x 2.5\n"
                                 "area 0.02 2.5\n"
                                 "  30  0.03  3.5\n");
    EXPECT_EQ(lut.area, (std::vector<double> { 10.0, 30.0 }));
    EXPECT_EQ(lut.deform, (std::vector<double> { 0.01, 0.03 }));
    EXPECT_EQ(lut.emodulus, (std::vector<double> { 1.5, 3.5 }));

    // Without a header line naming a column, the first row would be taken as header if it named one;
    // numbers alone are rows.
    const EModulusLut bare = read("1 0.1 5\n2 0.2 6\n");
    EXPECT_EQ(bare.area.size(), 2u);
}

TEST_F(EModulusLutFile, UnreadableFileGivesNoTable)
{
    EModulusLut lut;
    EXPECT_FALSE(readEModulusLut(folder.filePath(QStringLiteral("missing.txt")), lut));
}

TEST_F(EModulusLutFile, OfferedTablesAreCheckedStrictly)
{
    struct Case
    {
        const char* what;
        QByteArray text;
        QString problem;
    };
    const Case cases[] = {
        { "good", rows, QString() },
        { "no header", "10 0.01 1.5\n20 0.02 2.5\n30 0.03 3.5\n", LookupTableTexts::noHeader },
        { "text in a number column", rows + "40 0.04 soft\n",
            LookupTableTexts::badRow.arg(5).arg(QStringLiteral("40 0.04 soft")) },
        { "short row", rows + "40 0.04\n", LookupTableTexts::badRow.arg(5).arg(QStringLiteral("40 0.04")) },
        { "too few rows", "area deform emodulus\n10 0.01 1\n20 0.02 2\n",
            LookupTableTexts::tooFewRows.arg(2) },
        { "empty", "", LookupTableTexts::noHeader },
        { "bad metadata", "# BEGIN METADATA\n# {oops\n# END METADATA\n" + rows,
            LookupTableTexts::badMetadata },
        { "one area only", "area deform emodulus\n10 0.01 1\n10 0.02 2\n10 0.03 3\n",
            LookupTableTexts::noExtent },
    };
    for (const Case& c : cases)
        EXPECT_EQ(lookupTableProblem(write(c.text)), c.problem) << c.what;
    EXPECT_EQ(
        lookupTableProblem(folder.filePath(QStringLiteral("missing.txt"))), LookupTableTexts::unreadable);
}
