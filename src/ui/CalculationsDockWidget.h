#pragma once

#include "calc/EModulus.h"
#include "calc/FLRefinement.h"

#include <QWidget>
#include <array>
#include <vector>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QStackedWidget;

namespace Tessaly {

struct DatasetEntry;
struct VQDMetadata;
class LookupTablePanel;
class SpilloverTable;

// The four calculations, in the order of the dock's pages.
enum class CalculationJob { Emodulus = 0, Compensation = 1, Refinement = 2, Fourier = 3 };

// The "Calculations" dock: one page per calculation with its inputs and its start button, and a
// progress bar under them. It only collects inputs and asks for jobs by its signals; the main window
// runs them. A start button is enabled while the dataset at hand allows its job and that job isn't
// running.
class CalculationsDockWidget : public QWidget
{
    Q_OBJECT

public:
    // `emodulus` is the engine whose look-up table the Young's modulus page shows.
    explicit CalculationsDockWidget(EModulus* emodulus, QWidget* parent = nullptr);

    // The dataset the calculations act on; null detaches the dock and disables every start button.
    void setDataset(DatasetEntry* dataset);
    DatasetEntry* dataset() const { return currentDataset; }

    // Fills the Young's modulus page from a dataset's metadata: channel, flow, pixel size, medium with
    // the viscosity model it allows, and the temperature. "Event" temperatures need the feature "temp".
    void setDatasetMetadata(const VQDMetadata& metadata, bool hasTemperatureFeature);
    // The deformation features that Young's modulus may be looked up from; the choice is shown only
    // when offered and there is more than plain deformation to choose.
    void fillDeformationSources(bool offered, bool hasFc, bool hasOdd);

    // Which jobs the dataset at hand allows.
    void setRefinementAvailable(bool hasChannels);
    // Rebuilds the spillover table for the channels; compensation needs at least two.
    void setCompensationChannels(const std::vector<int>& channels);
    void setEmodulusAvailable(bool available, bool applied);
    void setFourierAvailable(bool hasMasks);
    // A running job keeps its button disabled whatever the dataset allows.
    void setJobRunning(CalculationJob job, bool running);
    bool isJobRunning(CalculationJob job) const;

    // The inputs of the jobs.
    EModulusParams emodulusParams() const;
    EModulusParams emodulusParamsFor(const VQDMetadata& metadata, bool allowEvent) const;
    FLRefinementParams fluorescenceParams() const;
    std::vector<std::vector<double>> spilloverMatrix() const;
    void setSpilloverMatrix(const std::vector<std::vector<double>>& matrix);
    bool applyToAll(CalculationJob job) const;
    bool useFilteredData() const;
    bool showRefinedTrace() const;

    QProgressBar* progressBar() const { return progress; }
    QPushButton* startButton(CalculationJob job) const;
    QPushButton* assessQualityButton() const { return assessButton; }
    // The stack of pages, for whoever wants to place something on the Young's modulus page.
    QWidget* page(CalculationJob job) const;
    void showPage(CalculationJob job);
    LookupTablePanel* lookupTablePanel() const { return tablePanel; }

Q_SIGNALS:
    void refineFluorescence();
    void traceDisplayChanged();
    void compensateCrosstalk();
    void computeEmodulus();
    void assessEmodQuality();
    // Declared for a classification of events that isn't built; nothing emits it.
    void runInference();
    void computeFourierDeform();
    // A look-up table has been put in place by the user.
    void lookupTableInstalled();

private:
    QWidget* createEmodulusPage(EModulus* emodulus);
    QWidget* createCompensationPage();
    QWidget* createRefinementPage();
    QWidget* createFourierPage();
    void updateTemperatureControl();
    void updateViscosity();
    void updateButtons();
    double labelValue(const QLabel* label, const QString& suffix) const;

    DatasetEntry* currentDataset = nullptr;
    // What the metadata of the dataset at hand says.
    double metadataTemperature = 23.0;
    int mediumCode = 4;
    bool deformSourceOffered = false;
    // What the dataset at hand allows, and what runs.
    std::array<bool, 4> available {};
    std::array<bool, 4> running {};
    bool emodApplied = false;

    QComboBox* pageCombo = nullptr;
    QStackedWidget* pages = nullptr;
    QProgressBar* progress = nullptr;
    std::array<QPushButton*, 4> startButtons {};
    std::array<QCheckBox*, 4> applyToAllBoxes {};

    // Young's modulus.
    LookupTablePanel* tablePanel = nullptr;
    QLabel* mediumLabel = nullptr;
    QComboBox* viscosityCombo = nullptr;
    QDoubleSpinBox* viscositySpinBox = nullptr;
    QDoubleSpinBox* temperatureSpinBox = nullptr;
    QRadioButton* manualRadio = nullptr;
    QRadioButton* metaRadio = nullptr;
    QRadioButton* eventRadio = nullptr;
    QButtonGroup* temperatureSources = nullptr;
    QLabel* channelWidthLabel = nullptr;
    QLabel* flowRateLabel = nullptr;
    QLabel* pixelSizeLabel = nullptr;
    QLabel* deformSourceLabel = nullptr;
    QComboBox* deformSourceCombo = nullptr;
    QPushButton* assessButton = nullptr;
    QCheckBox* useFilteredBox = nullptr;

    // Crosstalk compensation.
    SpilloverTable* spilloverTable = nullptr;

    // Fluorescence refinement: the five trace filters in chain order.
    std::array<QCheckBox*, 5> filterBoxes {};
    std::array<QSpinBox*, 5> halfWindowSpinBoxes {};
    QDoubleSpinBox* flMaxThresholdSpinBox = nullptr;
    QCheckBox* showRefinedBox = nullptr;
};

} // namespace Tessaly
