#include "app/Theme.h"

#include <QColor>

namespace Tessaly {

const QString plainSelectorStyleSheet = QStringLiteral("QComboBox { padding: 2px 6px; min-height: 0; }");
const QString warningSelectorStyleSheet = QStringLiteral(
    "QComboBox { padding: 2px 6px; min-height: 0; background-color: #fff8e1; border: 1px solid #f9a825; }");

QPalette applicationPalette()
{
    const QColor text(35, 38, 46);
    const QColor white(255, 255, 255);
    const QColor accent(0, 171, 173);
    const QColor dark(160, 164, 170);

    QPalette palette;
    palette.setColor(QPalette::Window, QColor(245, 246, 248));
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Base, white);
    palette.setColor(QPalette::HighlightedText, white);
    palette.setColor(QPalette::ToolTipBase, white);
    palette.setColor(QPalette::Light, white);
    palette.setColor(QPalette::AlternateBase, QColor(240, 242, 245));
    palette.setColor(QPalette::Button, QColor(238, 240, 243));
    palette.setColor(QPalette::BrightText, QColor(210, 60, 60));
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::Midlight, QColor(235, 237, 240));
    palette.setColor(QPalette::Mid, QColor(200, 203, 208));
    palette.setColor(QPalette::Dark, dark);
    palette.setColor(QPalette::Shadow, QColor(120, 124, 130));
    // After the all-groups colours, which would otherwise overwrite the greyed text.
    palette.setColor(QPalette::Disabled, QPalette::Text, dark);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, dark);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, dark);
    return palette;
}

// Tokens: window #f5f6f8, text #23262e, accent #00abad, selection #a6d7d5, hairline #dcdee2,
// control border #c8cbd0, panel grey #eceef1, button grey #eaecef (hover #dfe1e5, pressed #d0d3d8,
// disabled #f0f1f3 with text #a0a4aa), alternate rows #f8f9fa, scroll handles #c0c4ca (hover #a0a4aa).
QString applicationStyleSheet()
{
    return QStringLiteral(R"(
QMainWindow, QDialog, QMenuBar {
    background-color: #f5f6f8;
}
QMenuBar::item {
    background: transparent;
    padding: 4px 10px;
}
QMenuBar::item:selected {
    background-color: #a6d7d5;
    border-radius: 4px;
}

QToolTip {
    color: #23262e;
    background-color: #ffffff;
    border: 1px solid #c8cbd0;
    border-radius: 4px;
    padding: 4px 8px;
}

QMenu {
    background-color: #ffffff;
    border: 1px solid #dcdee2;
    border-radius: 6px;
    padding: 4px 0px;
}
QMenu::item {
    background: transparent;
    padding: 6px 28px 6px 20px;
}
QMenu::item:selected {
    background-color: #a6d7d5;
    color: #23262e;
}
QMenu::item:disabled {
    color: #a0a4aa;
}
QMenu::separator {
    height: 1px;
    background-color: #dcdee2;
    margin: 4px 12px;
}

QPushButton {
    background-color: #eaecef;
    border: 1px solid #c8cbd0;
    border-radius: 5px;
    padding: 4px 14px;
    min-height: 20px;
}
QPushButton:hover {
    background-color: #dfe1e5;
}
QPushButton:pressed, QPushButton:checked {
    background-color: #d0d3d8;
}
QPushButton:disabled {
    background-color: #f0f1f3;
    color: #a0a4aa;
}

QComboBox, QSpinBox, QDoubleSpinBox, QLineEdit {
    background-color: #ffffff;
    border: 1px solid #c8cbd0;
    border-radius: 5px;
    padding: 2px 6px;
    min-height: 20px;
}
QComboBox:hover, QSpinBox:hover, QDoubleSpinBox:hover, QLineEdit:hover,
QComboBox:focus, QSpinBox:focus, QDoubleSpinBox:focus, QLineEdit:focus {
    border: 1px solid #00abad;
}
QComboBox:disabled, QSpinBox:disabled, QDoubleSpinBox:disabled, QLineEdit:disabled {
    background-color: #f0f1f3;
    color: #a0a4aa;
}
QComboBox::drop-down {
    width: 1px;
    border: none;
}
QComboBox QAbstractItemView {
    background-color: #ffffff;
    border: 1px solid #dcdee2;
    selection-background-color: #a6d7d5;
    selection-color: #23262e;
}

QSpinBox::up-button, QDoubleSpinBox::up-button {
    subcontrol-origin: border;
    subcontrol-position: top right;
    width: 20px;
    background-color: #eaecef;
    border-left: 1px solid #c8cbd0;
    border-top-right-radius: 5px;
}
QSpinBox::down-button, QDoubleSpinBox::down-button {
    subcontrol-origin: border;
    subcontrol-position: bottom right;
    width: 20px;
    background-color: #eaecef;
    border-left: 1px solid #c8cbd0;
    border-bottom-right-radius: 5px;
}
QSpinBox::up-button:hover, QDoubleSpinBox::up-button:hover,
QSpinBox::down-button:hover, QDoubleSpinBox::down-button:hover {
    background-color: #dfe1e5;
}
QSpinBox::up-button:pressed, QDoubleSpinBox::up-button:pressed,
QSpinBox::down-button:pressed, QDoubleSpinBox::down-button:pressed {
    background-color: #d0d3d8;
}
QSpinBox::up-arrow, QDoubleSpinBox::up-arrow {
    image: url(:/arrow-up.svg);
    width: 10px;
    height: 10px;
}
QSpinBox::down-arrow, QDoubleSpinBox::down-arrow {
    image: url(:/arrow-down.svg);
    width: 10px;
    height: 10px;
}

QCheckBox {
    spacing: 6px;
}
QCheckBox::indicator {
    width: 16px;
    height: 16px;
    border: 1px solid #c8cbd0;
    border-radius: 3px;
    background-color: #ffffff;
}
QCheckBox::indicator:hover {
    border: 1px solid #00abad;
}
QCheckBox::indicator:checked {
    background-color: #00abad;
    border: 1px solid #00abad;
    image: url(:/checkmark.svg);
}
QCheckBox::indicator:disabled {
    background-color: #f0f1f3;
}

QGroupBox {
    font-weight: 600;
    border: 1px solid #dcdee2;
    border-radius: 6px;
    margin-top: 8px;
    padding-top: 14px;
}
QGroupBox::title {
    subcontrol-origin: margin;
    subcontrol-position: top left;
    left: 12px;
    padding: 0px 4px;
}

QDockWidget {
    titlebar-close-icon: none;
    font-weight: 600;
}
QDockWidget::title {
    background-color: #eceef1;
    border-bottom: 1px solid #dcdee2;
    padding: 6px 8px;
    text-align: left;
}

QAbstractItemView {
    border: 1px solid #dcdee2;
}
QTreeWidget, QListWidget {
    background-color: #ffffff;
    alternate-background-color: #f8f9fa;
}
QTreeWidget::item:selected, QListWidget::item:selected {
    background-color: #a6d7d5;
    color: #00abad;
}
QTreeWidget::branch:selected {
    background-color: #a6d7d5;
}

QHeaderView::section {
    background-color: #eceef1;
    border: none;
    border-right: 1px solid #dcdee2;
    border-bottom: 1px solid #dcdee2;
    padding: 4px 6px;
}

QTabWidget::pane {
    border: 1px solid #dcdee2;
    top: -1px;
}
QTabBar::tab {
    background-color: #eaecef;
    border: 1px solid #dcdee2;
    border-top-left-radius: 5px;
    border-top-right-radius: 5px;
    padding: 6px 14px;
    margin-right: 2px;
}
QTabBar::tab:hover {
    background-color: #dfe1e5;
}
QTabBar::tab:selected {
    background-color: #ffffff;
    border-bottom: 2px solid #00abad;
}
QTabBar::tab:disabled {
    background-color: #f0f1f3;
    color: #a0a4aa;
}
/* The tabs of docks that share a place: three titles fit a dock at its least width. */
QMainWindow > QTabBar::tab {
    padding: 5px 8px;
}

QSplitter::handle {
    background-color: #dcdee2;
}
QSplitter::handle:horizontal {
    width: 2px;
}
QSplitter::handle:vertical {
    height: 2px;
}

QProgressBar {
    background-color: #eceef1;
    border: 1px solid #dcdee2;
    border-radius: 5px;
    text-align: center;
}
QProgressBar::chunk {
    background-color: #00abad;
    border-radius: 5px;
}

QScrollBar:vertical {
    background: transparent;
    width: 10px;
    margin: 0px;
}
QScrollBar:horizontal {
    background: transparent;
    height: 10px;
    margin: 0px;
}
QScrollBar::handle {
    background-color: #c0c4ca;
    border-radius: 5px;
}
QScrollBar::handle:hover {
    background-color: #a0a4aa;
}
QScrollBar::handle:vertical {
    min-height: 30px;
}
QScrollBar::handle:horizontal {
    min-width: 30px;
}
QScrollBar::add-line, QScrollBar::sub-line {
    width: 0px;
    height: 0px;
    border: none;
    background: none;
}
QScrollBar::add-page, QScrollBar::sub-page {
    background: transparent;
}
)");
}

} // namespace Tessaly
