#pragma once

#include <QString>
#include <functional>

class QBoxLayout;
class QFont;
class QLabel;
class QPushButton;
class QWidget;

// Layout helpers every window of the program uses.
namespace WindowHelpers {

// Wrapping labels never grow wider than this.
inline constexpr int wrapWidth = 470;

// A push button with the given title that calls action when clicked.
QPushButton* button(const QString& title, QWidget* parent, std::function<void()> action);

// Puts layout into container with equal insets; content hugs the top, space is left at the bottom.
void install(QBoxLayout* layout, QWidget* container, int padding);

// A wrapping label at most wrapWidth wide that never gets squeezed vertically.
QLabel* wrappingLabel(const QString& text, const QFont& font, QWidget* parent);

// A font of the system family at the given pixel size.
QFont systemFont(int pixelSize, bool bold = false);

// Gives a window the keys a Linux user expects of every window of this program: Ctrl+Q quits
// through the application's one quit path.
void addWindowActions(QWidget* window);

} // namespace WindowHelpers
