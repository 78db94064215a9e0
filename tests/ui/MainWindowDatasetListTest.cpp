#include "MainWindowFixture.h"
#include "support/FixtureWriter.h"
#include "ui/DatasetListWidget.h"
#include "ui/DatasetTreeWidget.h"

#include <QApplication>
#include <QComboBox>
#include <QDragMoveEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>
#include <memory>

using namespace Tessaly;
using Tessaly::Testing::MainWindowFixture;

using MainWindowDatasetList = MainWindowFixture;

namespace {

QStringList names(MainWindow& w)
{
    QStringList result;
    for (const DatasetEntry* entry : w.datasets())
        result << entry->displayName;
    return result;
}

std::unique_ptr<QMimeData> datasetDrag(int id)
{
    auto data = std::make_unique<QMimeData>();
    data->setData(datasetMimeType, QByteArray::number(id));
    return data;
}

} // namespace

TEST_F(MainWindowDatasetList, ReorderingMovesTheDatasetAndKeepsTheActiveOne)
{
    MainWindow& w = makeWindow();
    for (const char* name : { "A", "B", "C", "D" })
        w.openDataset(writeDataset(QString("%1.vqd").arg(name), name));
    ASSERT_TRUE(waitUntilIdle());
    auto* list = w.findChild<DatasetListWidget*>("datasetList");
    const int activeId = w.activeDatasetId(); // D, the last opened

    // Row 0 to the end, row 3 to the front: the target row counts before the removal.
    Q_EMIT list->internalReorderRequested(0, 4);
    EXPECT_EQ(names(w), (QStringList { "B", "C", "D", "A" }));
    Q_EMIT list->internalReorderRequested(2, 0);
    EXPECT_EQ(names(w), (QStringList { "D", "B", "C", "A" }));
    EXPECT_EQ(w.activeDatasetId(), activeId);
    EXPECT_EQ(list->currentRow(), 0);
    for (int row = 0; row < 4; ++row)
        EXPECT_EQ(
            list->item(row)->data(Qt::UserRole).toInt(), w.datasets()[static_cast<std::size_t>(row)]->id);
}

TEST_F(MainWindowDatasetList, DropsDecideTheTargetRowByTheHalfOfTheRow)
{
    MainWindow& w = makeWindow();
    for (const char* name : { "A", "B", "C" })
        w.openDataset(writeDataset(QString("%1.vqd").arg(name), name));
    ASSERT_TRUE(waitUntilIdle());
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
    auto* list = w.findChild<DatasetListWidget*>("datasetList");
    QSignalSpy reorders(list, &DatasetListWidget::internalReorderRequested);
    const QRect rowA = list->visualItemRect(list->item(0));
    const QRect rowC = list->visualItemRect(list->item(2));
    const int idB = w.datasets()[1]->id;

    // B onto the lower half of A, or onto itself, is B's own place.
    EXPECT_FALSE(list->requestMove(datasetDrag(idB).get(), QPoint(rowA.center().x(), rowA.bottom() - 1)));
    EXPECT_FALSE(list->requestMove(datasetDrag(idB).get(), list->visualItemRect(list->item(1)).center()));
    EXPECT_FALSE(list->requestMove(datasetDrag(12345).get(), rowA.center()));
    // B onto the upper half of A goes before A; onto the lower half of C, to the end.
    ASSERT_TRUE(list->requestMove(datasetDrag(idB).get(), QPoint(rowA.center().x(), rowA.top() + 1)));
    ASSERT_TRUE(reorders.wait(5000));
    EXPECT_EQ(reorders.takeFirst(), (QList<QVariant> { 1, 0 }));
    EXPECT_EQ(names(w), (QStringList { "B", "A", "C" }));
    ASSERT_TRUE(list->requestMove(datasetDrag(idB).get(), QPoint(rowC.center().x(), rowC.bottom() - 1)));
    ASSERT_TRUE(reorders.wait(5000));
    EXPECT_EQ(names(w), (QStringList { "A", "C", "B" }));
}

TEST_F(MainWindowDatasetList, LabelsShowNamesLiterallyWithTheirDetails)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("x.vqd", "Cells <5 µm> & more", 150));
    ASSERT_TRUE(waitUntilIdle());
    auto* list = w.findChild<DatasetListWidget*>("datasetList");
    EXPECT_EQ(list->item(0)->text(), "<b>Cells &lt;5 µm&gt; &amp; more</b> (0.06 µL/s, #1, 150 events)");
    EXPECT_EQ(list->item(0)->toolTip(), folder.filePath("x.vqd"));

    // Without a numeric flow rate that part is left out; the reservoir goes first.
    const QString reservoir = folder.filePath("reservoir.vqd");
    Testing::FixtureWriter(reservoir.toStdString())
        .column<double>("deform", { 0.1, 0.2 })
        .stringAttribute("setup:module composition", "Vortiq")
        .stringAttribute("setup:flow rate", "fast")
        .stringAttribute("setup:chip region", "reservoir")
        .intAttribute("experiment:run index", 7)
        .stringAttribute("experiment:sample", "R")
        .close();
    w.openDataset(reservoir);
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_EQ(list->item(1)->text(), "<b>R</b> (Reservoir, #7, 2 events)");
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(), "Loaded: R (Reservoir, #7, 2 events)");
}

TEST_F(MainWindowDatasetList, RenamingToBlanksRestoresTheSampleName)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("x.vqd", "Sample X"));
    ASSERT_TRUE(waitUntilIdle());
    auto* rename = w.findChild<QLineEdit*>("renameEdit");
    auto* list = w.findChild<DatasetListWidget*>("datasetList");
    ASSERT_TRUE(rename->isEnabled());

    rename->setText("  Better name ");
    Q_EMIT rename->editingFinished();
    EXPECT_EQ(w.datasets()[0]->displayName, "Better name");
    EXPECT_TRUE(list->item(0)->text().startsWith("<b>Better name</b>"));
    EXPECT_TRUE(w.findChild<QLabel*>("statusLabel")->text().startsWith("Loaded: Better name ("));

    rename->setText("   ");
    Q_EMIT rename->editingFinished();
    EXPECT_EQ(w.datasets()[0]->displayName, "Sample X");

    // A duplicate's new name leaves the source's alone.
    w.duplicateDataset();
    rename->setText("Copy renamed");
    Q_EMIT rename->editingFinished();
    EXPECT_EQ(names(w), (QStringList { "Sample X", "Copy renamed" }));
}

TEST_F(MainWindowDatasetList, FolderViewGroupsByFolderAndSelectsTheActiveDataset)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("run1/c/a.vqd", "A"));
    w.openDataset(writeDataset("run1/d/b.vqd", "B"));
    ASSERT_TRUE(waitUntilIdle());
    w.findChild<QComboBox*>("datasetViewModeCombo")->setCurrentIndex(1);
    auto* tree = w.findChild<DatasetTreeWidget*>("datasetTree");
    ASSERT_TRUE(w.datasetFolderViewActive());
    // Depth 2: the two folders under their common parent.
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    QTreeWidgetItem* parent = tree->topLevelItem(0);
    EXPECT_EQ(parent->text(0), "run1");
    ASSERT_EQ(parent->childCount(), 2);
    EXPECT_FALSE(parent->flags() & Qt::ItemIsSelectable);
    QTreeWidgetItem* itemA = parent->child(0)->child(0);
    EXPECT_EQ(itemA->data(0, Qt::UserRole).toInt(), w.datasets()[0]->id);
    EXPECT_EQ(tree->currentItem()->data(0, Qt::UserRole).toInt(), w.activeDatasetId());

    // Choosing in the tree makes that dataset active.
    tree->setCurrentItem(itemA);
    EXPECT_EQ(w.activeDatasetId(), w.datasets()[0]->id);

    // Reordering from the tree: A after B.
    auto* treeWidget = static_cast<DatasetTreeWidget*>(tree);
    Q_EMIT treeWidget->internalReorderRequested(w.datasets()[0]->id, w.datasets()[1]->id, true);
    EXPECT_EQ(names(w), (QStringList { "B", "A" }));
    EXPECT_EQ(w.activeDatasetId(), w.datasets()[1]->id);
}
