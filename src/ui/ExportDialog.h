#pragma once

#include "ui/ExportConfig.h"

#include <QDialog>
#include <map>
#include <string>
#include <vector>

class QCheckBox;
class QGridLayout;
class QGroupBox;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace Tessaly {

struct DatasetEntry;

// Gathers the choices of a data export: scope, format, video options, the scalar features (the union
// over all datasets), the non-scalar data and the output folder. Controls that the chosen format or
// scope can't serve are disabled or hidden, with a tool tip that says why.
class ExportDialog : public QDialog
{
    Q_OBJECT

public:
    // `dataset` is the current dataset; `lastConfig`, when given, restores the choices of the last
    // export. The reanalysis option exists only with `expertMode`.
    ExportDialog(const DatasetEntry* dataset, const std::vector<DatasetEntry*>& datasets, bool expertMode,
        QWidget* parent = nullptr, const ExportConfig* lastConfig = nullptr);

    ExportConfig config() const;

    // The check box of a feature, or nullptr; for tests.
    QCheckBox* featureCheckBox(const std::string& name) const;

private Q_SLOTS:
    void onBrowseDir();
    void onSelectAll();
    void onDeselectAll();
    void onScopeChanged();
    void onFormatChanged();

private:
    struct FeatureBox
    {
        QCheckBox* box = nullptr;
        bool inCurrent = false;
    };
    struct NonScalarBox
    {
        QCheckBox* box = nullptr;
        bool inCurrent = false;
        bool inAny = false;
        bool chosen = false; // the user's choice, kept while another format overrides it
    };

    QGroupBox* createScopeGroup(int datasetCount);
    QGroupBox* createFormatGroup(bool expertMode);
    QGroupBox* createFeatureGroup(const std::vector<DatasetEntry*>& datasets);
    QGroupBox* createNonScalarGroup(const std::vector<DatasetEntry*>& datasets);
    QGroupBox* createDirectoryGroup();
    void applyConfig(const ExportConfig& config);
    void updateAvailability();
    void layoutFeatures();
    bool videoChosen() const;

    const DatasetEntry* current;
    QRadioButton* currentOnlyRadio = nullptr;
    QRadioButton* allDatasetsRadio = nullptr;
    QRadioButton* vqdRadio = nullptr;
    QRadioButton* tsvRadio = nullptr;
    QRadioButton* aviRadio = nullptr;
    QGroupBox* aviGroup = nullptr;
    QRadioButton* mjpegRadio = nullptr;
    QRadioButton* rawRadio = nullptr;
    QCheckBox* skipDuplicatesBox = nullptr;
    QCheckBox* reanalysisBox = nullptr;
    QPushButton* selectAllButton = nullptr;
    QPushButton* deselectAllButton = nullptr;
    std::map<std::string, FeatureBox> featureBoxes; // sorted by key, as listed
    QGridLayout* featureGrid = nullptr;
    NonScalarBox imagesBox;
    NonScalarBox masksBox;
    NonScalarBox tracesBox;
    QCheckBox* customDirectoryBox = nullptr;
    QLineEdit* directoryEdit = nullptr;
    QPushButton* browseButton = nullptr;
};

} // namespace Tessaly
