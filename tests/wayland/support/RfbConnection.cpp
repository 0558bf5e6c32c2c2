#include "RfbConnection.h"

#include <QDeadlineTimer>
#include <QtEndian>
#include <array>

using namespace Qt::StringLiterals;

namespace {

void appendU16(QByteArray& data, quint16 value)
{
    data.append(char(value >> 8)).append(char(value & 0xff));
}

void appendU32(QByteArray& data, quint32 value)
{
    appendU16(data, quint16(value >> 16));
    appendU16(data, quint16(value & 0xffff));
}

} // namespace

bool RfbConnection::readExactly(char* data, qint64 size, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    qint64 done = 0;
    while (done < size) {
        if (m_socket.bytesAvailable() == 0 && !m_socket.waitForReadyRead(int(deadline.remainingTime()))) {
            m_error = u"the VNC server did not answer: %1"_s.arg(m_socket.errorString());
            return false;
        }
        const qint64 got = m_socket.read(data + done, size - done);
        if (got < 0) {
            m_error = u"reading from the VNC server: %1"_s.arg(m_socket.errorString());
            return false;
        }
        done += got;
    }
    return true;
}

bool RfbConnection::open(const QString& socketPath, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    m_socket.connectToServer(socketPath);
    if (!m_socket.waitForConnected(timeoutMs)) {
        m_error = u"cannot connect to %1: %2"_s.arg(socketPath, m_socket.errorString());
        return false;
    }
    auto remaining = [&] { return int(qMax<qint64>(deadline.remainingTime(), 1)); };

    std::array<char, 12> version {};
    if (!readExactly(version.data(), version.size(), remaining()))
        return false;
    if (QByteArray(version.data(), version.size()) < "RFB 003.008\n") {
        m_error = u"the VNC server speaks %1, not RFB 3.8"_s.arg(QString::fromLatin1(version.data(), 11));
        return false;
    }
    if (!send("RFB 003.008\n"))
        return false;

    // Security types: a count, then the types; 0 means failure with a reason.
    quint8 count = 0;
    if (!readExactly(reinterpret_cast<char*>(&count), 1, remaining()))
        return false;
    QByteArray types(count, '\0');
    if (count == 0 || !readExactly(types.data(), count, remaining())) {
        m_error = u"the VNC server offers no security type"_s;
        return false;
    }
    if (!types.contains('\x01')) {
        m_error = u"the VNC server wants authentication"_s;
        return false;
    }
    if (!send(QByteArray(1, '\x01')))
        return false;
    std::array<uchar, 4> result {};
    if (!readExactly(reinterpret_cast<char*>(result.data()), 4, remaining()))
        return false;
    if (qFromBigEndian<quint32>(result.data()) != 0) {
        m_error = u"the VNC server refused the connection"_s;
        return false;
    }

    // ClientInit with "shared", then ServerInit: width, height, pixel format (16 bytes), name.
    if (!send(QByteArray(1, '\x01')))
        return false;
    std::array<uchar, 24> init {};
    if (!readExactly(reinterpret_cast<char*>(init.data()), init.size(), remaining()))
        return false;
    m_size = QSize(qFromBigEndian<quint16>(init.data()), qFromBigEndian<quint16>(init.data() + 2));
    QByteArray name(qFromBigEndian<quint32>(init.data() + 20), '\0');
    if (!readExactly(name.data(), name.size(), remaining()))
        return false;
    m_name = QString::fromUtf8(name);
    return true;
}

bool RfbConnection::isOpen() const
{
    return m_socket.state() == QLocalSocket::ConnectedState && m_size.isValid();
}

bool RfbConnection::send(const QByteArray& message)
{
    if (m_socket.write(message) != message.size()) {
        m_error = u"writing to the VNC server: %1"_s.arg(m_socket.errorString());
        return false;
    }
    // Out of the socket's buffer now, so that the events reach the server in order and at once.
    while (m_socket.bytesToWrite() > 0) {
        if (!m_socket.waitForBytesWritten(20000)) {
            m_error = u"writing to the VNC server: %1"_s.arg(m_socket.errorString());
            return false;
        }
    }
    return true;
}

void RfbConnection::drain()
{
    m_socket.waitForReadyRead(0);
    m_socket.readAll();
}

bool RfbConnection::pointer(QPoint position, quint8 buttonMask)
{
    if (!isOpen()) {
        m_error = u"not connected to a VNC server"_s;
        return false;
    }
    drain();
    QByteArray message;
    message.append('\x05').append(char(buttonMask));
    appendU16(message, quint16(qBound(0, position.x(), 0xffff)));
    appendU16(message, quint16(qBound(0, position.y(), 0xffff)));
    return send(message);
}

bool RfbConnection::key(quint32 keysym, bool down)
{
    if (!isOpen()) {
        m_error = u"not connected to a VNC server"_s;
        return false;
    }
    drain();
    QByteArray message;
    message.append('\x04').append(down ? '\x01' : '\x00').append(2, '\0');
    appendU32(message, keysym);
    return send(message);
}
