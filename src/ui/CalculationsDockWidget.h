#pragma once

#include "calc/EModulusParams.h"

#include <QWidget>

namespace Tessaly {

struct DatasetEntry;
struct VQDMetadata;
class EModulus;
class LookupTablePanel;

// The "Calculations" dock: where the user starts the derived-feature calculations of a dataset.
class CalculationsDockWidget : public QWidget
{
    Q_OBJECT

public:
    explicit CalculationsDockWidget(EModulus* emodulus, QWidget* parent = nullptr);

    // The dataset the calculations act on; null detaches the dock.
    void setDataset(DatasetEntry* dataset);
    DatasetEntry* dataset() const { return currentDataset; }

    // Young's modulus parameters for one dataset from its own metadata; the temperature comes per
    // event when `allowEvent` holds, else from the metadata.
    EModulusParams emodulusParamsFor(const VQDMetadata& metadata, bool allowEvent) const;

    LookupTablePanel* lookupTablePanel() const { return tablePanel; }

Q_SIGNALS:
    // A look-up table has been put in place by the user.
    void lookupTableInstalled();

private:
    DatasetEntry* currentDataset = nullptr;
    LookupTablePanel* tablePanel = nullptr;
};

} // namespace Tessaly
