#include "ui/CalculationsDockWidget.h"

#include "io/VQDMetadata.h"
#include "ui/LookupTablePanel.h"

#include <QVBoxLayout>

namespace Tessaly {

CalculationsDockWidget::CalculationsDockWidget(EModulus* emodulus, QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    tablePanel = new LookupTablePanel(emodulus, this);
    layout->addWidget(tablePanel);
    layout->addStretch(1);
    connect(
        tablePanel, &LookupTablePanel::tableInstalled, this, &CalculationsDockWidget::lookupTableInstalled);
}

void CalculationsDockWidget::setDataset(DatasetEntry* dataset)
{
    currentDataset = dataset;
}

EModulusParams CalculationsDockWidget::emodulusParamsFor(const VQDMetadata& metadata, bool allowEvent) const
{
    return emodulusParamsFromMetadata(metadata, allowEvent);
}

} // namespace Tessaly
