#include "ui/FilterDockWidget.h"

#include "core/DatasetEntry.h"

#include <QLabel>
#include <QVBoxLayout>

namespace Tessaly {

namespace {
const QString noDatasetText = QStringLiteral("No dataset selected");
}

FilterDockWidget::FilterDockWidget(QWidget* parent)
    : QWidget(parent)
    , datasetLabel(new QLabel(noDatasetText, this))
{
    // Dataset names are text, never markup.
    datasetLabel->setTextFormat(Qt::PlainText);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(datasetLabel);
    layout->addStretch(1);
}

void FilterDockWidget::setDataset(DatasetEntry* dataset)
{
    currentDataset = dataset;
    datasetLabel->setText(dataset ? dataset->displayName : noDatasetText);
}

void FilterDockWidget::setDatasetCount(int count)
{
    datasets = count;
}

} // namespace Tessaly
