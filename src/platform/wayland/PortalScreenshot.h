#pragma once

#include <QImage>
#include <QObject>
#include <QString>

class PortalRequest;

// A picture from org.freedesktop.portal.Screenshot. Non-interactive it is one picture of all
// monitors; interactive the desktop lets the user choose first (GNOME and KDE offer a window, sway
// an area). The file the portal wrote for it (some desktops write into the user's Pictures folder)
// is read and then removed, so that a screenshot leaves nothing behind that the user did not save.
class PortalScreenshot : public QObject {
    Q_OBJECT

public:
    struct Result {
        enum class Outcome {
            picture,
            // The user refused the screenshot (non-interactive) or cancelled the desktop's picker.
            declined,
            failed,
        };
        Outcome outcome = Outcome::failed;
        QImage picture;
        // Turkish, for a failure.
        QString reason;
    };

    explicit PortalScreenshot(QObject* parent = nullptr);
    ~PortalScreenshot() override;

    // parentWindow: the portal's handle of the window the request belongs to ("" for none).
    void take(bool interactive, const QString& parentWindow = {});

    // The picture in the file a portal answered with, read and then removed; null if unreadable.
    static QImage readAndRemove(const QString& uri, QString* reason);

Q_SIGNALS:
    void finished(const PortalScreenshot::Result& result);

private:
    PortalRequest* m_request = nullptr;
};
