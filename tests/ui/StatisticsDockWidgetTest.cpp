#include "ui/StatisticsDockWidget.h"

#include <QHeaderView>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

QTreeWidget* tableOf(StatisticsDockWidget& dock)
{
    return dock.findChild<QTreeWidget*>(QStringLiteral("statisticsTable"));
}

QStringList header(const QTreeWidget* table)
{
    QStringList labels;
    for (int c = 0; c < table->columnCount(); ++c)
        labels << table->headerItem()->text(c);
    return labels;
}

QStringList column(const QTreeWidget* table, int c)
{
    QStringList texts;
    for (int row = 0; row < table->topLevelItemCount(); ++row)
        texts << table->topLevelItem(row)->text(c);
    return texts;
}

const QStringList rowNames { "N", "Mean", "SD", "Q1", "Median", "Q3", "IQR" };

} // namespace

TEST(StatisticsDockWidget, EmptyPlotLeavesTheHeaderAlone)
{
    StatisticsDockWidget dock;
    QTreeWidget* table = tableOf(dock);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(header(table), (QStringList { "Statistic", "X", "Y" }));
    EXPECT_EQ(table->topLevelItemCount(), 0);
    EXPECT_FALSE(table->rootIsDecorated());
    EXPECT_TRUE(table->alternatingRowColors());

    dock.updateStatistics({ 1.0, 2.0 }, { 3.0, 4.0 }, "Area [µm²]", "Deformation");
    dock.updateStatistics({}, {}, "Area [µm²]", "Brightness");
    EXPECT_EQ(header(table), (QStringList { "Statistic", "Area [µm²]", "Brightness" }));
    EXPECT_EQ(table->topLevelItemCount(), 0);

    dock.updateStatistics({ 1.0 }, {}, "A", "B");
    EXPECT_EQ(table->topLevelItemCount(), 0);

    dock.updateStatistics({ 1.0, 2.0 }, { 3.0, 4.0 }, "A", "B");
    dock.clearStatistics();
    EXPECT_EQ(header(table), (QStringList { "Statistic", "X", "Y" }));
    EXPECT_EQ(table->topLevelItemCount(), 0);
}

TEST(StatisticsDockWidget, FiguresOfBothAxesInGeneralFormatRightAligned)
{
    StatisticsDockWidget dock;
    QTreeWidget* table = tableOf(dock);
    // Area in µm² and deformation of 14 events. Reference: numpy 1.24 np.mean, np.std(ddof=1),
    // np.quantile(method='linear'), printed with '%.6g' (the 'g' format with 6 significant digits).
    const std::vector<double> area { 88.4, 132.7, 57.25, 210.0, 101.3, 95.6, 143.9, 77.05, 66.8, 118.2,
        250.45, 91.0, 104.75, 84.15 };
    const std::vector<double> deform { 0.0123, 0.0456, 0.0089, 0.1021, 0.0311, 0.0275, 0.0532, 0.0147, 0.0102,
        0.0398, 0.1377, 0.0254, 0.0339, 0.0166 };
    dock.updateStatistics(area, deform, "Area [µm²]", "Deformation");

    EXPECT_EQ(header(table), (QStringList { "Statistic", "Area [µm²]", "Deformation" }));
    EXPECT_EQ(column(table, 0), rowNames);
    EXPECT_EQ(column(table, 1),
        (QStringList { "14", "115.825", "54.4368", "85.2125", "98.45", "129.075", "43.8625" }));
    EXPECT_EQ(column(table, 2),
        (QStringList { "14", "0.0399286", "0.0371103", "0.015175", "0.0293", "0.04415", "0.028975" }));
    for (int row = 0; row < table->topLevelItemCount(); ++row) {
        const QTreeWidgetItem* item = table->topLevelItem(row);
        EXPECT_EQ(item->textAlignment(1), int(Qt::AlignRight | Qt::AlignVCenter)) << row;
        EXPECT_EQ(item->textAlignment(2), int(Qt::AlignRight | Qt::AlignVCenter)) << row;
    }

    // Large values switch to the exponent form. By hand: mean 2e6, SD sqrt(2 * 1e12) = 1414213.6,
    // quartiles 1.5e6, 2e6, 2.5e6. A refresh replaces the rows rather than adding to them.
    dock.updateStatistics({ 1e6, 3e6 }, { 1.0, 2.0 }, "X", "Y");
    EXPECT_EQ(column(table, 0), rowNames);
    EXPECT_EQ(column(table, 1),
        (QStringList { "2", "2e+06", "1.41421e+06", "1.5e+06", "2e+06", "2.5e+06", "1e+06" }));
    EXPECT_EQ(column(table, 2), (QStringList { "2", "1.5", "0.707107", "1.25", "1.5", "1.75", "0.5" }));
}

TEST(StatisticsDockWidget, OneEventHasNoSpread)
{
    StatisticsDockWidget dock;
    dock.updateStatistics({ 42.5 }, { -0.125 }, "X", "Y");
    QTreeWidget* table = tableOf(dock);
    EXPECT_EQ(column(table, 1), (QStringList { "1", "42.5", "0", "42.5", "42.5", "42.5", "0" }));
    EXPECT_EQ(column(table, 2), (QStringList { "1", "-0.125", "0", "-0.125", "-0.125", "-0.125", "0" }));
}

// Axis labels are often longer than a column of the dock: they wrap onto further header lines, the
// figures keep their width, and the table needs no sideways scrolling at the dock's usual width.
TEST(StatisticsDockWidget, LongLabelsWrapAndFiguresStayWhole)
{
    StatisticsDockWidget dock;
    dock.resize(340, 320);
    dock.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dock));
    QTreeWidget* table = tableOf(dock);
    const QString xLabel = QString::fromUtf8("Position along channel axis [µm]");
    const QString yLabel = QStringLiteral("Deformation");
    dock.updateStatistics({ 12.5, 80.3897, 150.25 }, { 0.0490087, 0.0276619, 0.0250863 }, xLabel, yLabel);
    QTest::qWait(20);

    QHeaderView* header = table->header();
    EXPECT_LE(header->length(), table->viewport()->width());
    const QFontMetrics headerMetrics = header->fontMetrics();
    const QFontMetrics cellMetrics = table->fontMetrics();
    for (int column = 1; column <= 2; ++column) {
        const QString label = table->headerItem()->text(column);
        const int width = header->sectionSize(column);
        // Every word fits on a line of its own, and the header is tall enough for all lines.
        for (const QString& word : label.split(' '))
            EXPECT_LT(headerMetrics.horizontalAdvance(word), width) << word.toStdString();
        const int lines
            = headerMetrics.boundingRect(QRect(0, 0, width - 12, 10000), Qt::TextWordWrap, label).height();
        EXPECT_GE(header->height(), lines) << label.toStdString();
        for (int row = 0; row < table->topLevelItemCount(); ++row)
            EXPECT_LT(cellMetrics.horizontalAdvance(table->topLevelItem(row)->text(column)), width);
    }
    // The full label is in the header's tool tip.
    EXPECT_EQ(table->headerItem()->toolTip(1), xLabel);
}
