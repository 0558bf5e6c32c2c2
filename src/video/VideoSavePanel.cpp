#include "VideoSavePanel.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

QFileDialog* VideoSavePanel::create(QWidget* parent)
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    if (!QFileInfo(folder).isDir())
        folder = QDir::homePath();
    auto* panel = new QFileDialog(parent, u"Video kaydını nereye kaydedelim?"_s);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setNameFilter(u"MPEG-4 (*.mp4)"_s);
    panel->setDefaultSuffix(u"mp4"_s);
    panel->setDirectory(folder);
    panel->selectFile(proposedFileName(QDateTime::currentDateTime()));
    panel->setWindowModality(Qt::WindowModal);
    return panel;
}

QString VideoSavePanel::proposedFileName(const QDateTime& now)
{
    return u"Vexet_"_s + now.toString(u"yyyy-MM-dd_HH-mm-ss"_s) + u".mp4"_s;
}
