#include "ui/RuleRowWidget.h"

#include "ui/FilterDockTexts.h"
#include "ui/FlowLayout.h"

#include <QCheckBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>

namespace Tessaly {

namespace {
QPushButton* makeButton(const QString& text, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setStyleSheet(FilterDockTexts::normalButtonSheet);
    return button;
}
} // namespace

RuleRowWidget::RuleRowWidget(QWidget* parent)
    : QWidget(parent)
    , enableBox(new QCheckBox(this))
    , peerRow(new QWidget(this))
    , applyButton(makeButton(FilterDockTexts::applyToAll, peerRow))
    , updateButton(makeButton(FilterDockTexts::updateInAll, peerRow))
    , checkButton(makeButton(FilterDockTexts::uncheckInAll, peerRow))
    , deleteButton(makeButton(FilterDockTexts::deleteFromAll, peerRow))
    , removeButton(new QToolButton(this))
{
    enableBox->setChecked(true);
    removeButton->setText(FilterDockTexts::removeButton);
    removeButton->setToolTip(FilterDockTexts::removeRuleToolTip);
    removeButton->setFixedWidth(20);
    removeButton->setAutoRaise(true);
    connect(removeButton, &QToolButton::clicked, this, &RuleRowWidget::removeRequested);
    auto* layout = new FlowLayout(peerRow);
    for (QPushButton* button : { applyButton, updateButton, checkButton, deleteButton })
        layout->addWidget(button);

    connect(applyButton, &QPushButton::clicked, this, &RuleRowWidget::applyRuleToAllRequested);
    connect(updateButton, &QPushButton::clicked, this, &RuleRowWidget::updateRuleToAllRequested);
    connect(checkButton, &QPushButton::clicked, this, &RuleRowWidget::onUncheckCheckClicked);
    connect(deleteButton, &QPushButton::clicked, this, &RuleRowWidget::deleteRuleFromAllRequested);
    connect(enableBox, &QCheckBox::toggled, this, [this] {
        updateButtons();
        emit ruleChanged();
    });
    updateButtons();
}

void RuleRowWidget::setPropagationId(const std::string& id)
{
    stored.propagationId = id;
    updateButtons();
}

void RuleRowWidget::setRuleChecked(bool on)
{
    const QSignalBlocker blocker(enableBox);
    enableBox->setChecked(on);
    updateButtons();
}

bool RuleRowWidget::isRuleChecked() const
{
    return enableBox->isChecked();
}

void RuleRowWidget::setPeerDifferences(bool parametersDiffer, bool enabledDiffers)
{
    updateButton->setStyleSheet(
        parametersDiffer ? FilterDockTexts::highlightedButtonSheet : FilterDockTexts::normalButtonSheet);
    checkButton->setStyleSheet(
        enabledDiffers ? FilterDockTexts::highlightedButtonSheet : FilterDockTexts::normalButtonSheet);
}

void RuleRowWidget::setPeerActionsEnabled(bool on)
{
    peerRow->setEnabled(on);
}

void RuleRowWidget::setInGroup(bool group)
{
    inGroup = group;
    updateButtons();
}

void RuleRowWidget::onUncheckCheckClicked()
{
    if (enableBox->isChecked())
        emit checkRuleInAllRequested();
    else
        emit uncheckRuleInAllRequested();
}

void RuleRowWidget::updateButtons()
{
    const bool linked = !stored.propagationId.empty();
    peerRow->setVisible(!inGroup);
    applyButton->setVisible(!linked);
    updateButton->setVisible(linked);
    checkButton->setVisible(linked);
    deleteButton->setVisible(linked);
    checkButton->setText(
        enableBox->isChecked() ? FilterDockTexts::checkInAll : FilterDockTexts::uncheckInAll);
}

} // namespace Tessaly
