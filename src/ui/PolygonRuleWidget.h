#pragma once

#include "ui/RuleRowWidget.h"

class QCheckBox;
class QLabel;
class QPushButton;

namespace Tessaly {

class PolygonPreview;
class VQDReader;

// A row of the filter dock for a polygon gate: the two features, the number of vertices, a
// thumbnail, "Invert" and "Edit", which hands the polygon to the plot for reshaping. Vertices and
// scale modes are kept in the stored rule and come back unchanged.
class PolygonRuleWidget : public RuleRowWidget
{
    Q_OBJECT

public:
    explicit PolygonRuleWidget(VQDReader* reader, QWidget* parent = nullptr);

    // Shows `rule` without signals.
    void setRule(const FilterRule& rule);
    FilterRule rule() const override;
    // Sets the "Edit" toggle without a signal, e.g. when the plot ends the editing.
    void setEditChecked(bool on);
    bool isEditChecked() const;
    // The dataset lacks one of the two features: the gate can't be drawn on its plot.
    bool isNotAvailable() const { return notAvailable; }

Q_SIGNALS:
    void editToggled(bool on);

private:
    VQDReader* reader;
    bool notAvailable = false;
    QLabel* titleLabel;
    QLabel* pointsLabel;
    PolygonPreview* preview;
    QCheckBox* invertBox;
    QPushButton* editButton;
};

} // namespace Tessaly
