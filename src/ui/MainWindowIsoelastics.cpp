// MainWindow: the lines of equal Young's modulus on the plot of area against deformation.
#include "calc/EModulus.h"
#include "core/DatasetEntry.h"
#include "plot/ScatterPlot.h"
#include "ui/CalculationsDockWidget.h"
#include "ui/MainWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <utility>

namespace Tessaly {

EModulus* MainWindow::emodulus()
{
    return emodulusEngine;
}

// The lines belong to a plot of area against deformation only, and are drawn for the active
// dataset's channel, flow, medium and temperature, so that they sit where cells of that modulus
// would lie in this measurement.
void MainWindow::updateIsoelastics()
{
    const auto key = [](const QComboBox* combo) { return combo->currentData().toString().toStdString(); };
    const std::string x = key(xFeatureCombo);
    const std::string y = key(yFeatureCombo);
    const bool pair = (x == "area_um" && y == "deform") || (x == "deform" && y == "area_um");
    isoelasticsCheckBox->setVisible(pair);
    isoelasticLabelsCheckBox->setVisible(pair && isoelasticsCheckBox->isChecked());

    const DatasetEntry* entry = activeEntry();
    if (!pair || !isoelasticsCheckBox->isChecked() || !entry || !entry->reader || !entry->reader->isOpen()) {
        scatterPlot->clearIsoelastics();
        return;
    }
    const EModulusParams params
        = calculationsDock->emodulusParamsFor(entry->metadata, entry->reader->hasFeature("temp"));
    std::vector<IsoelasticLine> lines = emodulusEngine->isoelastics(params);
    if (lines.empty()) {
        scatterPlot->clearIsoelastics();
        return;
    }
    if (x == "deform")
        for (IsoelasticLine& line : lines)
            for (auto& point : line.points)
                std::swap(point.first, point.second);
    scatterPlot->setIsoelastics(lines, isoelasticLabelsCheckBox->isChecked());
}

} // namespace Tessaly
