#pragma once

#include <QImage>
#include <QObject>
#include <QVariantMap>
#include <optional>

// org.freedesktop.portal.Screenshot on the session bus, called as a program does: a handle
// token, then the Response signal of the Request object.
class ScreenshotPortal : public QObject {
    Q_OBJECT

public:
    struct Answer {
        uint code = 2; // 0 done, 1 cancelled by the user, 2 failed
        QVariantMap results;
        QString uri() const { return results.value(QStringLiteral("uri")).toString(); }
    };

    // Asks for a picture (interactive: the desktop lets the user pick) and waits for the answer;
    // nothing if the portal did not answer.
    std::optional<Answer> screenshot(bool interactive, int timeoutMs = 20000);
    // The answer's picture, read and then removed as a program using the portal does.
    static QImage takePicture(const Answer& answer);

    QString errorString() const { return m_error; }

public Q_SLOTS:
    // The Request's Response (a slot for QtDBus).
    void response(uint code, const QVariantMap& results);

private:
    std::optional<Answer> m_answer;
    QString m_error;
};
