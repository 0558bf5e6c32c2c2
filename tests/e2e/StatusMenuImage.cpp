#include "StatusMenuImage.h"

#include "Preferences.h"
#include "StatusMenu.h"

#include <QMenu>

using namespace Qt::StringLiterals;

QImage StatusMenuImage::render(Preferences& preferences, bool fiveSpaces)
{
    std::unique_ptr<QMenu> menu(StatusMenu::build(
        [&preferences](CaptureMode mode) { return preferences.shortcut(mode).display(); }, {}));
    if (!fiveSpaces) {
        const QList<QAction*> items = menu->actions();
        for (QAction* item : items)
            item->setText(item->text().replace(u"     "_s, u" "_s));
    }
    menu->ensurePolished();
    menu->resize(menu->sizeHint());
    return menu->grab().toImage().convertToFormat(QImage::Format_RGB32);
}
