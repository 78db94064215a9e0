#include "ui/FilterDockWidget.h"

#include "core/DatasetEntry.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace Tessaly {

namespace {
const QString noDatasetText = QStringLiteral("No dataset selected");
const QString polygonButtonText = QStringLiteral("+ Polygon");
const QString polygonButtonToolTip
    = QStringLiteral("Click in the plot to place polygon vertices. Double-click to close the polygon, or "
                     "press Esc to cancel.");
} // namespace

FilterDockWidget::FilterDockWidget(QWidget* parent)
    : QWidget(parent)
    , datasetLabel(new QLabel(noDatasetText, this))
    , polygonButton(new QPushButton(polygonButtonText, this))
{
    polygonButton->setObjectName(QStringLiteral("polygonDrawButton"));
    polygonButton->setCheckable(true);
    polygonButton->setToolTip(polygonButtonToolTip);
    polygonButton->setEnabled(false);
    connect(polygonButton, &QPushButton::toggled, this, [this](bool on) {
        if (on)
            emit polygonDrawRequested();
        else
            emit polygonDrawCancelRequested();
    });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(datasetLabel);
    layout->addWidget(polygonButton);
    layout->addStretch(1);
}

void FilterDockWidget::setDataset(DatasetEntry* dataset)
{
    currentDataset = dataset;
    datasetLabel->setText(dataset ? dataset->displayName : noDatasetText);
    polygonButton->setEnabled(dataset != nullptr);
}

void FilterDockWidget::setDatasetCount(int count)
{
    datasets = count;
}

void FilterDockWidget::setPolygonDrawChecked(bool checked)
{
    const QSignalBlocker block(polygonButton);
    polygonButton->setChecked(checked);
}

bool FilterDockWidget::isPolygonDrawChecked() const
{
    return polygonButton->isChecked();
}

void FilterDockWidget::setPolygonEditChecked(int ruleIndex, bool checked)
{
    if (checked)
        editedPolygonRules.insert(ruleIndex);
    else
        editedPolygonRules.remove(ruleIndex);
}

} // namespace Tessaly
