#pragma once

#include <QDialog>
#include <QString>
#include <utility>
#include <vector>

class QListWidget;

namespace Tessaly {

// Asks which filter groups to write to a file: one checkable line per group, all checked at first.
class FilterGroupSelectionDialog : public QDialog
{
    Q_OBJECT

public:
    // Groups as (id, name), in the order shown.
    explicit FilterGroupSelectionDialog(
        const std::vector<std::pair<int, QString>>& groups, QWidget* parent = nullptr);

    // Ids of the checked groups, in list order.
    std::vector<int> selectedGroupIds() const;
    void setAllChecked(bool checked);

private:
    QListWidget* list;
};

} // namespace Tessaly
