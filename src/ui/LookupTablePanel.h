#pragma once

#include <QString>
#include <QWidget>

class QLabel;
class QPushButton;

namespace Tessaly {

class EModulus;

// Texts of the look-up table panel.
namespace LookupTablePanelTexts {
inline const QString title = QStringLiteral("Young's modulus table");
// %1 the file's path.
inline const QString inUse = QStringLiteral("In use: %1");
// %1 the file name, %2 the folders searched.
inline const QString notFound
    = QStringLiteral("No table \"%1\" found, so Young's modulus can't be computed. Searched: %2");
// %1 the file's path.
inline const QString unusable = QStringLiteral(
    "The table %1 has fewer than 3 rows, so Young's modulus can't be computed. Replace it and restart.");
inline const QString noMetadata = QStringLiteral("The table states no reference conditions; it is taken as "
                                                 "computed for 20 µm, 0.16 µL/s and 1.002 mPa·s.");
inline const QString chooseButton = QStringLiteral("Choose Table...");
inline const QString chooseToolTip = QStringLiteral(
    "Copy a finite-element look-up table into your own data folder, where the program finds it.");
inline const QString chooseCaption = QStringLiteral("Choose Look-up Table");
inline const QString chooseFilter = QStringLiteral("Text tables (*.txt);;All Files (*)");
inline const QString invalidTitle = QStringLiteral("Invalid Table");
// %1 the file's path, %2 what is wrong.
inline const QString invalidText = QStringLiteral("%1 can't serve as the Young's modulus table:\n\n%2");
inline const QString copyFailedTitle = QStringLiteral("Cannot Copy Table");
// %1 the target path, %2 the reason.
inline const QString copyFailedText = QStringLiteral("The table could not be written to %1:\n\n%2");
} // namespace LookupTablePanelTexts

// Says which Young's modulus table is in use (its file and its metadata block), or that none was
// found and where the program looked, with a button that puts a table of the user's choice into the
// user's own data folder.
class LookupTablePanel : public QWidget
{
    Q_OBJECT

public:
    explicit LookupTablePanel(EModulus* engine, QWidget* parent = nullptr);

    // Reads the table state afresh; a table found since the last look is shown.
    void refresh();
    // Checks the table at `path` and copies it into the user's data folder; false, after a message,
    // when it is refused or can't be written.
    bool installTable(const QString& path);

    QString statusText() const;
    QString metadataText() const;
    bool chooseOffered() const;

Q_SIGNALS:
    // A table has been put in place; what depends on it may now be drawn.
    void tableInstalled();

private Q_SLOTS:
    void chooseTable();

private:
    EModulus* engine;
    QLabel* statusLabel;
    QLabel* metadataLabel;
    QPushButton* chooseTableButton;
};

} // namespace Tessaly
