#include "ui/FilterGroupSelectionDialog.h"

#include "ui/FilterOperationTexts.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace Tessaly {

FilterGroupSelectionDialog::FilterGroupSelectionDialog(
    const std::vector<std::pair<int, QString>>& groups, QWidget* parent)
    : QDialog(parent)
    , list(new QListWidget(this))
{
    setWindowTitle(FilterOperationTexts::exportTitle);
    resize(360, 360);
    list->setObjectName(QStringLiteral("groupSelectionList"));
    for (const auto& [id, name] : groups) {
        auto* item = new QListWidgetItem(name, list);
        item->setData(Qt::UserRole, id);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Checked);
    }
    auto* selectAll = new QPushButton(FilterOperationTexts::selectAll, this);
    auto* selectNone = new QPushButton(FilterOperationTexts::selectNone, this);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(FilterOperationTexts::selectGroupsLabel, this));
    layout->addWidget(list, 1);
    auto* selection = new QHBoxLayout;
    selection->addWidget(selectAll);
    selection->addWidget(selectNone);
    selection->addStretch(1);
    layout->addLayout(selection);
    layout->addWidget(buttons);

    connect(selectAll, &QPushButton::clicked, this, [this] { setAllChecked(true); });
    connect(selectNone, &QPushButton::clicked, this, [this] { setAllChecked(false); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

std::vector<int> FilterGroupSelectionDialog::selectedGroupIds() const
{
    std::vector<int> ids;
    for (int row = 0; row < list->count(); ++row) {
        const QListWidgetItem* item = list->item(row);
        if (item->checkState() == Qt::Checked)
            ids.push_back(item->data(Qt::UserRole).toInt());
    }
    return ids;
}

void FilterGroupSelectionDialog::setAllChecked(bool checked)
{
    for (int row = 0; row < list->count(); ++row)
        list->item(row)->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

} // namespace Tessaly
