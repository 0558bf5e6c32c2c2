#pragma once

#include <QImage>

class Preferences;

// The status menu as the program draws it for the given stored settings, for comparing with
// what the running program shows.
class StatusMenuImage {
public:
    // fiveSpaces false draws the titles with a single space before the shortcut (a menu that
    // must not match).
    static QImage render(Preferences& preferences, bool fiveSpaces = true);
};
