#include "ui/FilterRuleWidget.h"

#include "core/FeatureCatalogue.h"
#include "core/FeatureRange.h"
#include "io/VQDReader.h"
#include "ui/FilterDockTexts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

namespace Tessaly {

namespace {

constexpr double boundLimit = 1e15;

QDoubleSpinBox* makeBoundSpin(const QString& toolTip, QWidget* parent)
{
    auto* spin = new QDoubleSpinBox(parent);
    spin->setRange(-boundLimit, boundLimit);
    spin->setDecimals(2);
    spin->setToolTip(toolTip);
    spin->setKeyboardTracking(false);
    // Wide enough for the usual magnitudes, and no wider, so that two fit beside each other.
    const int textWidth = spin->fontMetrics().horizontalAdvance(FilterDockTexts::spinWidthText);
    spin->setMinimumWidth(textWidth + 8);
    spin->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return spin;
}

} // namespace

FilterRuleWidget::FilterRuleWidget(VQDReader* reader, bool readColumns, QWidget* parent)
    : RuleRowWidget(parent)
    , reader(reader)
    , readColumns(readColumns)
    , featureCombo(new QComboBox(this))
    , minSpin(makeBoundSpin(FilterDockTexts::minimumToolTip, this))
    , maxSpin(makeBoundSpin(FilterDockTexts::maximumToolTip, this))
    , invertBox(new QCheckBox(FilterDockTexts::invert, this))
{
    stored.type = RangeRule;
    featureCombo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    featureCombo->setMinimumContentsLength(8);
    featureCombo->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    if (reader) {
        for (const std::string& name : reader->featureNames()) {
            if (!isScalarFeature(name))
                continue;
            const QString label = QString::fromStdString(reader->featureLabel(name));
            featureCombo->addItem(label, QString::fromStdString(name));
            featureCombo->setItemData(featureCombo->count() - 1, label, Qt::ToolTipRole);
        }
    }
    invertBox->setToolTip(FilterDockTexts::invertToolTip);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(3);
    auto* top = new QHBoxLayout;
    top->addWidget(enableBox);
    top->addWidget(featureCombo, 1);
    top->addWidget(invertBox);
    top->addWidget(removeRowButton());
    auto* bounds = new QHBoxLayout;
    bounds->addWidget(minSpin, 1);
    bounds->addWidget(new QLabel(QStringLiteral("–"), this));
    bounds->addWidget(maxSpin, 1);
    layout->addLayout(top);
    layout->addLayout(bounds);
    layout->addWidget(peerButtonRow());

    if (featureCombo->count() > 0)
        stored.featureName = featureCombo->itemData(0).toString().toStdString();

    connect(featureCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
        &FilterRuleWidget::onFeatureChanged);
    connect(minSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this](double value) {
        stored.minValue = value;
        emit ruleChanged();
    });
    connect(maxSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this](double value) {
        stored.maxValue = value;
        emit ruleChanged();
    });
    connect(invertBox, &QCheckBox::toggled, this, &FilterRuleWidget::ruleChanged);
}

void FilterRuleWidget::setRule(const FilterRule& rule)
{
    const QSignalBlocker blockEnable(enableBox);
    const QSignalBlocker blockInvert(invertBox);
    const QSignalBlocker blockCombo(featureCombo);
    const QSignalBlocker blockMin(minSpin);
    const QSignalBlocker blockMax(maxSpin);
    stored = rule;
    enableBox->setChecked(rule.enabled);
    invertBox->setChecked(rule.inverted);

    const QString name = QString::fromStdString(rule.featureName);
    const int found = featureCombo->findData(name);
    if (found >= 0) {
        featureCombo->setCurrentIndex(found);
        // The format depends on the feature alone; a refresh that shows the same feature again
        // doesn't scan its column again.
        if (readColumns && reader && formattedFeature != rule.featureName) {
            if (const auto range = finiteRange(reader->getFeature(rule.featureName)))
                applyRangeFormat(range->second - range->first);
            formattedFeature = rule.featureName;
        }
    } else if (!name.isEmpty()) {
        featureCombo->addItem(name + FilterDockTexts::notAvailableSuffix, name);
        featureCombo->setCurrentIndex(featureCombo->count() - 1);
        notAvailable = true;
        setValuesEnabled(false);
    }
    minSpin->setValue(rule.minValue);
    maxSpin->setValue(rule.maxValue);
    updateButtons();
}

FilterRule FilterRuleWidget::rule() const
{
    FilterRule rule = stored;
    rule.inverted = invertBox->isChecked();
    if (notAvailable)
        return rule;
    rule.type = RangeRule;
    rule.featureName = featureCombo->currentData().toString().toStdString();
    rule.enabled = enableBox->isChecked();
    return rule;
}

void FilterRuleWidget::onFeatureChanged(int index)
{
    if (!reader || index < 0)
        return;
    const std::string name = featureCombo->itemData(index).toString().toStdString();
    if (!reader->hasFeature(name) || !isScalarFeature(name))
        return;
    if (notAvailable) {
        for (int i = featureCombo->count() - 1; i >= 0; --i) {
            if (featureCombo->itemText(i).endsWith(FilterDockTexts::notAvailableSuffix)) {
                const QSignalBlocker blocker(featureCombo);
                featureCombo->removeItem(i);
            }
        }
        notAvailable = false;
        setValuesEnabled(true);
    }
    stored.featureName = name;
    // A feature without a single finite value has no range to offer; the bounds stay as they were.
    if (const auto range = finiteRange(reader->getFeature(name))) {
        const QSignalBlocker blockMin(minSpin);
        const QSignalBlocker blockMax(maxSpin);
        applyRangeFormat(range->second - range->first);
        formattedFeature = name;
        minSpin->setValue(range->first);
        maxSpin->setValue(range->second);
        stored.minValue = range->first;
        stored.maxValue = range->second;
    }
    emit ruleChanged();
}

void FilterRuleWidget::applyRangeFormat(double width)
{
    for (QDoubleSpinBox* spin : { minSpin, maxSpin }) {
        spin->setDecimals(rangeDecimals(width));
        spin->setSingleStep(rangeStep(width));
    }
}

void FilterRuleWidget::setValuesEnabled(bool on)
{
    enableBox->setEnabled(on);
    minSpin->setEnabled(on);
    maxSpin->setEnabled(on);
}

} // namespace Tessaly
