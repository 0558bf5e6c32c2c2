#pragma once

#include <QDateTime>
#include <QString>

class QFileDialog;
class QWidget;

// The dialog that asks where a recording is saved, before it begins.
class VideoSavePanel {
public:
    // A window-modal save dialog over parent for one MP4 file in the Videos folder (the home folder
    // without one), with a name proposed from now; it deletes itself when closed.
    static QFileDialog* create(QWidget* parent);
    // "Vexet_yyyy-MM-dd_HH-mm-ss.mp4"
    static QString proposedFileName(const QDateTime& now);
};
