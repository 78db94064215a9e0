#include "ui/PolygonRuleWidget.h"

#include "io/VQDReader.h"
#include "ui/FilterDockTexts.h"
#include "ui/PolygonPreview.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

namespace Tessaly {

PolygonRuleWidget::PolygonRuleWidget(VQDReader* reader, QWidget* parent)
    : RuleRowWidget(parent)
    , reader(reader)
    , titleLabel(new QLabel(this))
    , pointsLabel(new QLabel(this))
    , preview(new PolygonPreview(this))
    , invertBox(new QCheckBox(FilterDockTexts::invert, this))
    , editButton(new QPushButton(FilterDockTexts::editPolygon, this))
{
    stored.type = PolygonRule;
    titleLabel->setStyleSheet(QStringLiteral("font-weight: 600;"));
    titleLabel->setWordWrap(true);
    titleLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    titleLabel->setMinimumWidth(60);
    pointsLabel->setStyleSheet(QStringLiteral("color: %1;").arg(FilterDockTexts::polygonPointsColor));
    invertBox->setToolTip(FilterDockTexts::invertToolTip);
    editButton->setCheckable(true);
    editButton->setToolTip(FilterDockTexts::editPolygonToolTip);
    editButton->setStyleSheet(FilterDockTexts::normalButtonSheet);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(3);
    auto* top = new QHBoxLayout;
    top->addWidget(enableBox);
    top->addWidget(titleLabel, 1);
    top->addWidget(removeRowButton());
    auto* middle = new QHBoxLayout;
    middle->addWidget(preview);
    middle->addWidget(pointsLabel);
    middle->addStretch(1);
    middle->addWidget(invertBox);
    middle->addWidget(editButton);
    layout->addLayout(top);
    layout->addLayout(middle);
    layout->addWidget(peerButtonRow());

    connect(invertBox, &QCheckBox::toggled, this, &PolygonRuleWidget::ruleChanged);
    connect(editButton, &QPushButton::toggled, this, &PolygonRuleWidget::editToggled);
}

void PolygonRuleWidget::setRule(const FilterRule& rule)
{
    const QSignalBlocker blockEnable(enableBox);
    const QSignalBlocker blockInvert(invertBox);
    stored = rule;
    stored.type = PolygonRule;
    enableBox->setChecked(rule.enabled);
    invertBox->setChecked(rule.inverted);

    const auto label = [this](const std::string& name) {
        return QString::fromStdString(reader ? reader->featureLabel(name) : name);
    };
    notAvailable = !reader || !reader->hasFeature(rule.featureName) || !reader->hasFeature(rule.featureNameY);
    QString title = label(rule.featureName) + FilterDockTexts::polygonVersus + label(rule.featureNameY);
    if (notAvailable)
        title += FilterDockTexts::notAvailableSuffix;
    titleLabel->setText(title);
    titleLabel->setToolTip(title);
    pointsLabel->setText(FilterDockTexts::polygonPoints.arg(rule.polygonVertices.size()));
    preview->setPolygon(rule.polygonVertices, rule.scaleXMode, rule.scaleYMode);
    editButton->setEnabled(!notAvailable);
    updateButtons();
}

FilterRule PolygonRuleWidget::rule() const
{
    FilterRule rule = stored;
    rule.enabled = enableBox->isChecked();
    rule.inverted = invertBox->isChecked();
    return rule;
}

void PolygonRuleWidget::setEditChecked(bool on)
{
    const QSignalBlocker blocker(editButton);
    editButton->setChecked(on);
}

bool PolygonRuleWidget::isEditChecked() const
{
    return editButton->isChecked();
}

} // namespace Tessaly
