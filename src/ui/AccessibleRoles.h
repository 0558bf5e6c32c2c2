#pragma once

#include <QAccessible>
#include <QMetaObject>

// What assistive technology (a screen reader, through AT-SPI) is told a widget is, where Qt's own
// answer is wrong. Qt calls every plain QWidget a "client" (AT-SPI: "filler"), also when it is a
// top-level window, so a screen reader would not announce the program's windows as windows.
namespace AccessibleRoles {

// Installs the program's answer, once, after the QApplication is made and before the first window
// is shown: a window that is a plain QWidget is a window, named by its title (dialogs, menus and
// Qt's other widgets keep Qt's roles); a class given to assign() has the role given there.
void install();

// Widgets of exactly this class (not its subclasses) have role. Installs the answer when it is not
// installed yet.
void assign(const QMetaObject& widgetClass, QAccessible::Role role);

} // namespace AccessibleRoles
