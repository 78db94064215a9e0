#pragma once

#include "ui/RuleRowWidget.h"

#include <string>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;

namespace Tessaly {

class VQDReader;

// A row of the filter dock for a range rule: the feature, both bounds (inclusive) and "Invert".
//
// The bounds are kept in the stored rule at full precision and only shown rounded: a rule loaded
// from a file or from another dataset is written back exactly as it came unless the user edits a
// bound, and a bound taken from the data (its smallest value) still passes that event.
//
// A rule on a feature that the dataset lacks is shown with " (n/a)" behind the name and its values
// disabled; the row then gives back the stored rule unchanged. Choosing a feature that exists ends
// that state for good.
class FilterRuleWidget : public RuleRowWidget
{
    Q_OBJECT

public:
    // Lists the scalar features of `reader`. Without `readColumns` no column is read to size the
    // bounds' decimals (the dataset is still loading); choosing a feature still reads its column.
    FilterRuleWidget(VQDReader* reader, bool readColumns, QWidget* parent = nullptr);

    // Shows `rule` without signals; its bounds stand, the feature's range is not applied.
    void setRule(const FilterRule& rule);
    FilterRule rule() const override;
    bool isNotAvailable() const { return notAvailable; }

public Q_SLOTS:
    // Takes the chosen feature's finite range as both bounds, with decimals and step to suit it.
    void onFeatureChanged(int index);

private:
    void applyRangeFormat(double width);
    void setValuesEnabled(bool on);

    VQDReader* reader;
    bool readColumns;
    bool notAvailable = false;
    // The feature whose range set the decimals and step of the bounds.
    std::string formattedFeature;
    QComboBox* featureCombo;
    QDoubleSpinBox* minSpin;
    QDoubleSpinBox* maxSpin;
    QCheckBox* invertBox;
};

} // namespace Tessaly
