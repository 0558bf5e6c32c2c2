#include "Alert.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>

using namespace Qt::StringLiterals;

void Alert::show(const QString& message, const QString& informativeText)
{
    ask(message, informativeText, { u"Tamam"_s });
}

int Alert::ask(const QString& message, const QString& informativeText, const QStringList& buttons)
{
    QMessageBox box;
    box.setWindowTitle(u"Vexet"_s);
    box.setIcon(QMessageBox::Warning);
    box.setText(message);
    box.setInformativeText(informativeText);
    box.setWindowModality(Qt::ApplicationModal);
    QList<QPushButton*> made;
    for (const QString& title : buttons)
        made.append(box.addButton(title, made.isEmpty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole));
    // Ctrl+C puts the whole text on the clipboard, e.g. for a bug report.
    auto* copy = new QShortcut(QKeySequence::Copy, &box);
    QObject::connect(copy, &QShortcut::activated, &box, [message, informativeText] {
        QGuiApplication::clipboard()->setText(message + u"\n\n"_s + informativeText);
    });
    if (!made.isEmpty()) {
        box.setDefaultButton(made.first());
        box.setEscapeButton(made.last());
    }
    box.show();
    box.raise();
    box.activateWindow();
    box.exec();
    return static_cast<int>(made.indexOf(qobject_cast<QPushButton*>(box.clickedButton())));
}
