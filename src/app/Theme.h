#pragma once

#include <QPalette>
#include <QString>

namespace Tessaly {

// The program's one light look with a single teal accent: a palette for the style's own drawing and
// a style sheet for the controls, both applied to the whole application at start-up.

// Palette of every colour group; disabled text is greyed.
QPalette applicationPalette();

// Style sheet of the whole application.
QString applicationStyleSheet();

// Sheets of the feature selectors: the plain one, and the warning one for a selection that needs
// the user's attention.
extern const QString plainSelectorStyleSheet;
extern const QString warningSelectorStyleSheet;

} // namespace Tessaly
