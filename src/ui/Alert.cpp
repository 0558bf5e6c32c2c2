#include "Alert.h"

#include <QMessageBox>
#include <QPushButton>

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
