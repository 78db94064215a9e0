#include "ui/CalculationsDockWidget.h"

#include <QVBoxLayout>

namespace Tessaly {

CalculationsDockWidget::CalculationsDockWidget(QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->addStretch(1);
}

void CalculationsDockWidget::setDataset(DatasetEntry* dataset)
{
    currentDataset = dataset;
}

} // namespace Tessaly
