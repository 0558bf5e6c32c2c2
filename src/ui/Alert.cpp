#include "Alert.h"

#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

void Alert::show(const QString& message, const QString& informativeText)
{
    QMessageBox box;
    box.setWindowTitle(u"Vexet"_s);
    box.setIcon(QMessageBox::Warning);
    box.setText(message);
    box.setInformativeText(informativeText);
    box.setWindowModality(Qt::ApplicationModal);
    QPushButton* ok = box.addButton(u"Tamam"_s, QMessageBox::AcceptRole);
    box.setDefaultButton(ok);
    box.setEscapeButton(ok);
    box.show();
    box.raise();
    box.activateWindow();
    box.exec();
}
