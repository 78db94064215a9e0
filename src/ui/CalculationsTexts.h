#pragma once

#include <QString>
#include <QStringList>

namespace Tessaly {

// Texts of the calculations dock and of the jobs it starts, in one place.
namespace CalculationsTexts {
inline const QString emodulusPage = QStringLiteral("Young's Modulus");
inline const QString compensationPage = QStringLiteral("Crosstalk Compensation");
inline const QString refinementPage = QStringLiteral("FL Refinement");
inline const QString fourierPage = QStringLiteral("Deformation from Fourier Decomposition");

inline const QString noValue = QStringLiteral("—");
inline const QString micrometreFormat = QStringLiteral("%1 µm");
inline const QString flowRateFormat = QStringLiteral("%1 µL/s");
inline const QString micrometreSuffix = QStringLiteral(" µm");
inline const QString flowRateSuffix = QStringLiteral(" µL/s");

inline const QString mediumRow = QStringLiteral("Medium:");
inline const QString viscosityRow = QStringLiteral("Viscosity:");
inline const QString etaRow = QStringLiteral("η [mPa·s]:");
inline const QString temperatureRow = QStringLiteral("Temperature:");
inline const QString channelWidthRow = QStringLiteral("Channel Width:");
inline const QString flowRateRow = QStringLiteral("Flow Rate:");
inline const QString pixelSizeRow = QStringLiteral("Pixel Size:");
inline const QString deformSourceRow = QStringLiteral("Deformation source:");
inline const QString viscositySuffix = QStringLiteral(" mPa·s");
inline const QString temperatureSuffix = QStringLiteral(" °C");
inline const QString manualSource = QStringLiteral("Manual");
inline const QString metaSource = QStringLiteral("Meta");
inline const QString eventSource = QStringLiteral("Event");
inline const QString heroldModel = QStringLiteral("Herold-2017");
inline const QString kestinModel = QStringLiteral("Kestin-1978");
inline const QString manualModel = QStringLiteral("Manual");
inline const QString deformSourceToolTip
    = QStringLiteral("Which deformation feature to map to Young's modulus. Fourier-decomposition "
                     "deformations skip the pixelation correction.");
inline const QString deformationSource = QStringLiteral("Deformation");
inline const QString deformationFcSource = QStringLiteral("Deformation from FC");
inline const QString deformationOddSource = QStringLiteral("Deformation of odd FC only");

inline const QString applyToAll = QStringLiteral("Apply to All Datasets");
inline const QString computeEmodulus = QStringLiteral("Compute Young's Modulus");
inline const QString assessQuality = QStringLiteral("Assess Quality");
inline const QString assessQualityToolTip
    = QStringLiteral("Evaluate how well the YM mapping works for this dataset");
inline const QString useFilteredData = QStringLiteral("Use filtered data");
inline const QString useFilteredDataToolTip
    = QStringLiteral("Evaluate only filtered events (excluding YM-based filters)");

inline const QString compensateCrosstalk = QStringLiteral("Compensate Crosstalk");
inline const QString channelHeader = QStringLiteral("FL-%1");

inline const QString traceFilters = QStringLiteral("Trace Filters");
inline const QString halfWindowLabel = QStringLiteral("k:");
inline const QString hampel1 = QStringLiteral("Hampel 1");
inline const QString hampel2 = QStringLiteral("Hampel 2");
inline const QString median = QStringLiteral("Median");
inline const QString rolling = QStringLiteral("Rolling Avg");
inline const QString savitzkyGolay = QStringLiteral("Savitzky-Golay");
inline const QString halfWindowToolTip = QStringLiteral("Half-window size (full window = 2k+1)");
inline const QString medianToolTip
    = QStringLiteral("Sliding median filter — removes impulse bursts shorter than k+1 samples");
inline const QString rollingToolTip = QStringLiteral("Moving mean filter (window = 2k+1)");
inline const QString savitzkyGolayToolTip = QStringLiteral("Half-window size (quadratic fit, window = 2k+1)");
inline const QString flMaxThresholdRow = QStringLiteral("FL max threshold:");
inline const QString flMaxThresholdToolTip
    = QStringLiteral("Minimum fl_max value for velocity estimation events");
inline const QString refineFluorescence = QStringLiteral("Refine Fluorescence");
inline const QString showRefinedTrace = QStringLiteral("Show Refined Trace");
inline const QString showRefinedTraceToolTip
    = QStringLiteral("Toggle between refined and original median trace display");

inline const QString fourierNote = QStringLiteral(
    "Decomposes each cell's contour into Fourier components and stores the deformation of the odd and "
    "even components only. Odd orders describe the front-to-back asymmetry of a cell in flow, even orders "
    "its elongation; \"Deformation from FC\" uses all of them.");
inline const QString computeFourier = QStringLiteral("Compute Fourier Deformation");

inline const QString progressFormat = QStringLiteral("%p%");
// %1 the dataset's place in the list of the run, from 1; %2 the length of that list.
inline const QString batchProgressFormat = QStringLiteral("Dataset %1 of %2 — %p%");
inline const QString fourierTitle = QStringLiteral("Fourier Deformation");
inline const QString noMasksInAnyDataset = QStringLiteral("No loaded dataset has segmentation masks.");
inline const QString noMasksInDataset = QStringLiteral("This dataset has no segmentation masks.");
} // namespace CalculationsTexts

} // namespace Tessaly
