#include "ui/FilterGroupSelectionDialog.h"

#include <QListWidget>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

QPushButton* button(QWidget* parent, const QString& text)
{
    for (QPushButton* b : parent->findChildren<QPushButton*>()) {
        if (b->text() == text)
            return b;
    }
    return nullptr;
}

} // namespace

TEST(FilterGroupSelectionDialog, ChecksDecideWhichIdsAreChosen)
{
    // Ids need not follow the list order: groups are listed in creation order, ids may have gaps.
    FilterGroupSelectionDialog dialog({ { 4, "Cells" }, { 1, "Beads" }, { 9, "Cells" } });
    EXPECT_EQ(dialog.windowTitle(), "Export Filter Groups");
    EXPECT_EQ(dialog.size(), QSize(360, 360));
    EXPECT_EQ(dialog.selectedGroupIds(), (std::vector<int> { 4, 1, 9 }));

    auto* list = dialog.findChild<QListWidget*>("groupSelectionList");
    ASSERT_EQ(list->count(), 3);
    EXPECT_EQ(list->item(2)->text(), "Cells");
    list->item(1)->setCheckState(Qt::Unchecked);
    EXPECT_EQ(dialog.selectedGroupIds(), (std::vector<int> { 4, 9 }));

    button(&dialog, "Select None")->click();
    EXPECT_TRUE(dialog.selectedGroupIds().empty());
    list->item(2)->setCheckState(Qt::Checked);
    EXPECT_EQ(dialog.selectedGroupIds(), (std::vector<int> { 9 }));
    button(&dialog, "Select All")->click();
    EXPECT_EQ(dialog.selectedGroupIds(), (std::vector<int> { 4, 1, 9 }));
}
