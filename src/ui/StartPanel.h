#pragma once

#include <QFrame>
#include <QString>
#include <QStringList>

class QLabel;
class QPushButton;

namespace Tessaly {

// The panel's own texts, for the widget and its tests.
namespace StartPanelText {
inline const QString title = QStringLiteral("No dataset loaded");
inline const QString hint = QStringLiteral("Drop .vqd files or folders here, or use File > Open.");
// %1 is the folder.
inline const QString examplesAt = QStringLiteral("Example datasets are in %1");
inline const QString openExamples = QStringLiteral("Open Example Data");
} // namespace StartPanelText

// The folder of example datasets that came with this build, if it has any: "examples" beside the
// program's folder (the build folder, where "make run" writes them) or inside it. Empty otherwise.
QString findExampleFolder(const QString& programFolder);
// The measurement files of a folder, in folder order.
QStringList exampleFiles(const QString& folder);

// What an empty plot says to someone who has just started the program: how to load data, and where
// the example datasets are, with a button that opens them. It lies centred over its host widget
// (the plot's canvas) and follows its size.
class StartPanel : public QFrame
{
    Q_OBJECT

public:
    explicit StartPanel(QWidget* host);

    // The folder of example datasets; empty hides the line and the button.
    void setExampleFolder(const QString& folder);
    QString exampleFolder() const { return folder; }

signals:
    void openExamplesRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place();

    QLabel* examplesLabel = nullptr;
    QPushButton* openButton = nullptr;
    QString folder;
};

} // namespace Tessaly
