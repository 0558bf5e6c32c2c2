#include "StatusMenu.h"

#include <QAction>
#include <QMenu>

using namespace Qt::StringLiterals;

QMenu* StatusMenu::build(const Labels& labels, const Actions& actions, QWidget* parent)
{
    auto* menu = new QMenu(parent);
    QAction* header = menu->addAction(u"Vexet"_s);
    header->setEnabled(false);

    for (CaptureMode mode : CaptureModes::allCases) {
        QAction* item = menu->addAction(itemTitle(mode, labels(mode)));
        item->setData(CaptureModes::rawValue(mode));
        QObject::connect(item, &QAction::triggered, menu, [item, captureMenu = actions.captureMenu] {
            if (captureMenu)
                captureMenu(item);
        });
    }
    menu->addSeparator();

    const auto addCommand = [menu](const QString& title, const std::function<void()>& action) {
        QAction* item = menu->addAction(title);
        QObject::connect(item, &QAction::triggered, menu, [action] {
            if (action)
                action();
        });
    };
    addCommand(u"Ayarlar…"_s, actions.openSettings);
    addCommand(u"Vexet hakkında"_s, actions.openAbout);
    addCommand(u"Çıkış"_s, actions.quit);
    return menu;
}

QString StatusMenu::itemTitle(CaptureMode mode, const QString& label)
{
    return label.isEmpty() ? CaptureModes::title(mode) : CaptureModes::title(mode) + u"     "_s + label;
}

QAction* StatusMenu::item(QMenu* menu, CaptureMode mode)
{
    if (!menu)
        return nullptr;
    const QList<QAction*> items = menu->actions();
    for (QAction* action : items) {
        bool isNumber = false;
        if (action->data().toUInt(&isNumber) == CaptureModes::rawValue(mode) && isNumber)
            return action;
    }
    return nullptr;
}
