#pragma once

#include <QLocalSocket>
#include <QPoint>
#include <QSize>
#include <QString>

// One connection to a VNC server (wayvnc on a unix socket) that only sends input: the RFB 3.8
// handshake without security, then pointer and key events. No picture is ever asked for; whatever
// the server sends on its own (clipboard, bell) is read and dropped.
class RfbConnection {
public:
    RfbConnection() = default;
    RfbConnection(const RfbConnection&) = delete;
    RfbConnection& operator=(const RfbConnection&) = delete;

    bool open(const QString& socketPath, int timeoutMs = 20000);
    bool isOpen() const;
    QString errorString() const { return m_error; }
    // The framebuffer size announced at the handshake: the output's size in device pixels then.
    QSize size() const { return m_size; }
    QString name() const { return m_name; }

    // RFB PointerEvent: position in the output's device pixels; bit 0 of the mask is the left
    // button, bit 1 the middle one, bit 2 the right one.
    bool pointer(QPoint position, quint8 buttonMask);
    // RFB KeyEvent by X keysym.
    bool key(quint32 keysym, bool down);

private:
    bool readExactly(char* data, qint64 size, int timeoutMs);
    bool send(const QByteArray& message);
    void drain();

    QLocalSocket m_socket;
    QSize m_size;
    QString m_name;
    QString m_error;
};
