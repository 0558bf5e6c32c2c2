#pragma once

#include "DesktopTexts.h"

#include <QString>
#include <QStringList>
#include <optional>

class HotKeysInterface;
class Preferences;

// What the launch alert says about the shortcuts once the platform has answered: the stored
// combinations the program could not take, the commands the desktop left without a key, or, once
// per user, that this desktop binds keys only to commands.
struct ShortcutReport {
    QString title;
    QString text;

    // failures: what the registry's resume() returned. Nothing to say gives none.
    static std::optional<ShortcutReport> atLaunch(const HotKeysInterface& hotKeys,
        const QStringList& failures, Preferences& preferences, const DesktopFacts& facts);
};
