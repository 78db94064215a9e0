// Filter group files: groups written to and read from small JSON files, to carry gates between
// sessions. Ids and the datasets' switches stay behind; imported groups start off everywhere.
#include "io/FilterGroupFile.h"
#include "ui/FilterDockWidget.h"
#include "ui/FilterGroupSelectionDialog.h"
#include "ui/FilterOperationTexts.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"

#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QSaveFile>

namespace Tessaly {

void MainWindow::onExportFilterGroups()
{
    if (groups.empty()) {
        MessageBoxes::information(
            this, FilterOperationTexts::exportTitle, FilterOperationTexts::noGroupsToExport);
        return;
    }
    std::vector<std::pair<int, QString>> choices;
    for (const FilterGroup* group : groups)
        choices.emplace_back(group->id, QString::fromStdString(group->name));
    FilterGroupSelectionDialog dialog(choices, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const std::vector<int> ids = dialog.selectedGroupIds();
    if (ids.empty())
        return;
    QString path = QFileDialog::getSaveFileName(
        this, FilterOperationTexts::exportTitle, QString(), FilterOperationTexts::fileFilter);
    if (path.isEmpty())
        return;
    if (!path.endsWith(FilterOperationTexts::fileSuffix, Qt::CaseInsensitive))
        path += FilterOperationTexts::fileSuffix;
    exportFilterGroups(path, ids);
}

bool MainWindow::exportFilterGroups(const QString& path, const std::vector<int>& groupIds)
{
    // Groups chosen in the dialog but removed since are left out.
    std::vector<const FilterGroup*> chosen;
    for (const int id : groupIds) {
        if (const FilterGroup* group = findFilterGroupById(id))
            chosen.push_back(group);
    }
    // The file appears whole or not at all: it is written aside and renamed into place.
    QSaveFile file(path);
    bool written = file.open(QIODevice::WriteOnly);
    if (written) {
        const QByteArray document = writeFilterGroupsDocument(chosen);
        written = file.write(document) == document.size() && file.commit();
    }
    if (!written) {
        MessageBoxes::critical(
            this, FilterOperationTexts::exportTitle, FilterOperationTexts::failedToWrite + path);
        return false;
    }
    statusLabel->setText(FilterOperationTexts::exportedStatus.arg(chosen.size()));
    return true;
}

void MainWindow::onImportFilterGroups()
{
    const QString path = QFileDialog::getOpenFileName(
        this, FilterOperationTexts::importTitle, QString(), FilterOperationTexts::openFileFilter);
    if (!path.isEmpty())
        importFilterGroups(path);
}

int MainWindow::importFilterGroups(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        MessageBoxes::critical(
            this, FilterOperationTexts::importTitle, FilterOperationTexts::failedToRead + path);
        return 0;
    }
    const QByteArray bytes = file.readAll();
    std::vector<FilterGroup> read;
    QString error;
    if (!readFilterGroupsDocument(bytes, &read, &error)) {
        MessageBoxes::critical(
            this, FilterOperationTexts::importTitle, FilterOperationTexts::notValidJson + error);
        return 0;
    }
    if (read.empty()) {
        MessageBoxes::information(
            this, FilterOperationTexts::importTitle, FilterOperationTexts::noGroupsInFile);
        return 0;
    }
    // Nothing is merged: a name that exists already gives a second group of that name.
    for (const FilterGroup& group : read) {
        const std::string name
            = group.name.empty() ? FilterOperationTexts::importedGroupName.toStdString() : group.name;
        FilterGroup* added = findFilterGroupById(addFilterGroup(name));
        for (FilterRule rule : group.rules) {
            rule.propagationId.clear();
            added->rules.push_back(rule);
        }
    }
    refreshFilterGroupWidgets();
    onFilterChanged();
    const int count = static_cast<int>(read.size());
    statusLabel->setText(FilterOperationTexts::importedStatus.arg(count));
    return count;
}

} // namespace Tessaly
