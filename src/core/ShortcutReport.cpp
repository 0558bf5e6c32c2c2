#include "ShortcutReport.h"

#include "HotKeysInterface.h"
#include "Preferences.h"

using namespace Qt::StringLiterals;

std::optional<ShortcutReport> ShortcutReport::atLaunch(const HotKeysInterface& hotKeys,
    const QStringList& failures, Preferences& preferences, const DesktopFacts& facts)
{
    const QString check = u"Kısayolları kontrol et"_s;
    switch (hotKeys.binder()) {
    case ShortcutBinder::program:
        if (failures.isEmpty())
            return std::nullopt;
        return ShortcutReport { check, DesktopTexts::shortcutFailuresLead(facts) + failures.join(u'\n') };
    case ShortcutBinder::desktop: {
        QStringList unbound;
        for (CaptureMode mode : CaptureModes::allCases) {
            if (hotKeys.label(mode).isEmpty())
                unbound.append(CaptureModes::title(mode));
        }
        if (unbound.isEmpty())
            return std::nullopt;
        return ShortcutReport { check, DesktopTexts::unboundCommandsLead() + unbound.join(u'\n') };
    }
    case ShortcutBinder::user:
        if (preferences.hasExplainedCommands())
            return std::nullopt;
        preferences.setHasExplainedCommands(true);
        return ShortcutReport { u"Kısayolları masaüstün atar"_s, DesktopTexts::bindCommandsYourself() };
    }
    return std::nullopt;
}
