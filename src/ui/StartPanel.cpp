#include "ui/StartPanel.h"

#include "ui/PathOrder.h"

#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace Tessaly {

namespace {

constexpr int panelWidth = 420;
constexpr int hostMargin = 12;

const QString panelSheet = QStringLiteral(
    "Tessaly--StartPanel { background-color: rgba(255, 255, 255, 235); border: 1px solid #dcdee2; "
    "border-radius: 6px; }");

QLabel* makeLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

} // namespace

QString findExampleFolder(const QString& programFolder)
{
    const QDir program(programFolder);
    for (const QString& candidate :
        { program.filePath(QStringLiteral("../examples")), program.filePath(QStringLiteral("examples")) }) {
        if (!exampleFiles(candidate).isEmpty())
            return QDir::cleanPath(QFileInfo(candidate).absoluteFilePath());
    }
    return QString();
}

QStringList exampleFiles(const QString& folder)
{
    if (folder.isEmpty())
        return {};
    const QDir dir(folder);
    QStringList files;
    for (const QString& name : dir.entryList({ QStringLiteral("*.vqd") }, QDir::Files))
        files << dir.filePath(name);
    sortPaths(files);
    return files;
}

StartPanel::StartPanel(QWidget* host)
    : QFrame(host)
{
    setObjectName(QStringLiteral("startPanel"));
    setStyleSheet(panelSheet);
    auto* title = makeLabel(StartPanelText::title, this);
    QFont bold = title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    title->setFont(bold);
    examplesLabel = makeLabel(QString(), this);
    examplesLabel->setObjectName(QStringLiteral("examplesLabel"));
    examplesLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    openButton = new QPushButton(StartPanelText::openExamples, this);
    openButton->setObjectName(QStringLiteral("openExamplesButton"));
    connect(openButton, &QPushButton::clicked, this, &StartPanel::openExamplesRequested);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 14, 16, 14);
    layout->setSpacing(8);
    layout->addWidget(title);
    layout->addWidget(makeLabel(StartPanelText::hint, this));
    layout->addWidget(examplesLabel);
    layout->addWidget(openButton, 0, Qt::AlignHCenter);
    setExampleFolder(QString());
    host->installEventFilter(this);
    place();
}

void StartPanel::setExampleFolder(const QString& exampleFolder)
{
    folder = exampleFolder;
    examplesLabel->setText(StartPanelText::examplesAt.arg(QDir::toNativeSeparators(folder)));
    examplesLabel->setVisible(!folder.isEmpty());
    openButton->setVisible(!folder.isEmpty());
    place();
}

bool StartPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        place();
    return QFrame::eventFilter(watched, event);
}

// Centred over the host, as wide as the text needs up to a limit, never wider than the host.
void StartPanel::place()
{
    const QWidget* host = parentWidget();
    // Never narrower than its button and words need: better a panel that reaches the host's edge
    // than a cut text.
    const int width
        = std::max(layout()->minimumSize().width(), std::min(panelWidth, host->width() - 2 * hostMargin));
    const int height = layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(width)
                                                     : layout()->totalSizeHint().height();
    setGeometry(
        std::max(0, (host->width() - width) / 2), std::max(0, (host->height() - height) / 2), width, height);
}

} // namespace Tessaly
