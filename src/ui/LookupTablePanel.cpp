#include "ui/LookupTablePanel.h"

#include "calc/EModulus.h"
#include "calc/LookupTableCheck.h"
#include "ui/MessageBoxes.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSaveFile>
#include <QVBoxLayout>

namespace Tessaly {

LookupTablePanel::LookupTablePanel(EModulus* engine, QWidget* parent)
    : QWidget(parent)
    , engine(engine)
{
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* box = new QGroupBox(LookupTablePanelTexts::title, this);
    outer->addWidget(box);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(6, 6, 6, 6);

    statusLabel = new QLabel(box);
    statusLabel->setObjectName(QStringLiteral("lookupTableStatus"));
    statusLabel->setWordWrap(true);
    statusLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(statusLabel);

    // The block tells the conditions the table was computed for and what it is; shown as written.
    metadataLabel = new QLabel(box);
    metadataLabel->setObjectName(QStringLiteral("lookupTableMetadata"));
    metadataLabel->setWordWrap(true);
    metadataLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    metadataLabel->setTextFormat(Qt::PlainText);
    metadataLabel->setStyleSheet(QStringLiteral("QLabel { color: #555555; font-size: 11px; }"));
    layout->addWidget(metadataLabel);

    chooseTableButton = new QPushButton(LookupTablePanelTexts::chooseButton, box);
    chooseTableButton->setToolTip(LookupTablePanelTexts::chooseToolTip);
    layout->addWidget(chooseTableButton, 0, Qt::AlignLeft);
    connect(chooseTableButton, &QPushButton::clicked, this, &LookupTablePanel::chooseTable);

    refresh();
}

void LookupTablePanel::refresh()
{
    engine->loadLut(0);
    const EModulusLut* lut = engine->lut(0);
    if (!lut) {
        QStringList folders;
        for (const QString& folder : engine->searchFolders())
            folders << QDir::toNativeSeparators(folder);
        statusLabel->setText(
            LookupTablePanelTexts::notFound.arg(EModulus::lutFileName, folders.join(QStringLiteral("; "))));
        metadataLabel->clear();
        metadataLabel->hide();
        chooseTableButton->show();
        return;
    }
    const QString path = QDir::toNativeSeparators(lut->filePath);
    statusLabel->setText(lut->area.size() < 3 ? LookupTablePanelTexts::unusable.arg(path)
                                              : LookupTablePanelTexts::inUse.arg(path));
    metadataLabel->setText(
        lut->metadataText.isEmpty() ? LookupTablePanelTexts::noMetadata : lut->metadataText);
    metadataLabel->show();
    // A table once read stays for the whole run, so another one could only take effect at the next start.
    chooseTableButton->hide();
}

void LookupTablePanel::chooseTable()
{
    const QString path = QFileDialog::getOpenFileName(
        this, LookupTablePanelTexts::chooseCaption, QDir::homePath(), LookupTablePanelTexts::chooseFilter);
    if (!path.isEmpty())
        installTable(path);
}

bool LookupTablePanel::installTable(const QString& path)
{
    const QString problem = lookupTableProblem(path);
    if (!problem.isEmpty()) {
        MessageBoxes::warning(this, LookupTablePanelTexts::invalidTitle,
            LookupTablePanelTexts::invalidText.arg(QDir::toNativeSeparators(path), problem));
        return false;
    }
    const QString folder = engine->userTableFolder();
    const QString target = folder + QLatin1Char('/') + EModulus::lutFileName;
    QFile source(path);
    QSaveFile copy(target);
    QString failure;
    if (!QDir().mkpath(folder))
        failure = QStringLiteral("The folder can't be created.");
    else if (!source.open(QIODevice::ReadOnly))
        failure = source.errorString();
    else if (!copy.open(QIODevice::WriteOnly))
        failure = copy.errorString();
    else if (copy.write(source.readAll()) != source.size() || !copy.commit())
        failure = copy.errorString();
    if (!failure.isEmpty()) {
        MessageBoxes::warning(this, LookupTablePanelTexts::copyFailedTitle,
            LookupTablePanelTexts::copyFailedText.arg(QDir::toNativeSeparators(target), failure));
        return false;
    }
    refresh();
    emit tableInstalled();
    return true;
}

QString LookupTablePanel::statusText() const
{
    return statusLabel->text();
}

QString LookupTablePanel::metadataText() const
{
    return metadataLabel->isVisibleTo(this) ? metadataLabel->text() : QString();
}

bool LookupTablePanel::chooseOffered() const
{
    return chooseTableButton->isVisibleTo(this);
}

} // namespace Tessaly
