#include "WaylandInput.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

quint8 maskOf(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton:
        return 1;
    case Qt::MiddleButton:
        return 2;
    case Qt::RightButton:
        return 4;
    default:
        return 0;
    }
}

} // namespace

WaylandInput::WaylandInput()
{
    const QString sockets = qEnvironmentVariable("VEXET_VNC_SOCKETS");
    if (sockets.isEmpty()) {
        fail(u"VEXET_VNC_SOCKETS is not set: not on the Wayland test desktop"_s);
        return;
    }
    for (const QString& entry : sockets.split(u':', Qt::SkipEmptyParts)) {
        const qsizetype equals = entry.indexOf(u'=');
        if (equals <= 0) {
            fail(u"VEXET_VNC_SOCKETS: cannot read \"%1\""_s.arg(entry));
            return;
        }
        auto connection = std::make_shared<RfbConnection>();
        if (!connection->open(entry.mid(equals + 1))) {
            fail(connection->errorString());
            return;
        }
        m_connections.insert(entry.left(equals), connection);
    }
    m_keyboardOutput = m_connections.firstKey();
    m_ready = true;
}

WaylandInput::~WaylandInput()
{
    // Nothing stays pressed after a failed test.
    if (m_ready && m_buttons != 0)
        sendPointer(m_position, 0);
}

bool WaylandInput::fail(const QString& error)
{
    m_error = error;
    return false;
}

bool WaylandInput::sendPointer(QPoint position, quint8 buttons)
{
    if (!m_ready)
        return false;
    const std::optional<SwayIpc::Output> output = m_sway.outputAt(position);
    if (!output)
        return fail(m_sway.errorString());
    const auto connection = m_connections.value(output->name);
    if (!connection)
        return fail(u"no VNC server for output %1"_s.arg(output->name));
    // A button held on one output's pointer is unknown to the other output's pointer.
    if (m_buttons != 0 && output->name != m_pointerOutput)
        return fail(
            u"a pointer with a button held cannot move from %1 to %2"_s.arg(m_pointerOutput, output->name));
    // Logical to device pixels: each server's frame is its output's mode.
    const QPoint local = position - output->rect.topLeft();
    const QPoint device(int(std::lround(local.x() * double(output->modeSize.width()) / output->rect.width())),
        int(std::lround(local.y() * double(output->modeSize.height()) / output->rect.height())));
    if (!connection->pointer(device, buttons))
        return fail(connection->errorString());
    m_pointerOutput = output->name;
    m_position = position;
    m_buttons = buttons;
    return true;
}

bool WaylandInput::move(QPoint position)
{
    return sendPointer(position, m_buttons);
}

bool WaylandInput::press(Qt::MouseButton button)
{
    if (m_pointerOutput.isEmpty())
        return fail(u"move the pointer before pressing a button"_s);
    return sendPointer(m_position, m_buttons | maskOf(button));
}

bool WaylandInput::release(Qt::MouseButton button)
{
    if (m_pointerOutput.isEmpty())
        return fail(u"move the pointer before releasing a button"_s);
    return sendPointer(m_position, m_buttons & ~maskOf(button));
}

bool WaylandInput::click(QPoint position, Qt::MouseButton button)
{
    return move(position) && press(button) && release(button);
}

bool WaylandInput::drag(QPoint from, QPoint to, int steps, Qt::MouseButton button)
{
    if (steps < 1)
        return fail(u"a drag needs at least one step"_s);
    if (!move(from) || !press(button))
        return false;
    for (int i = 1; i <= steps; ++i) {
        const QPoint step(from.x() + int(std::lround(double(to.x() - from.x()) * i / steps)),
            from.y() + int(std::lround(double(to.y() - from.y()) * i / steps)));
        if (!move(step)) {
            const QString error = m_error;
            release(button);
            return fail(error);
        }
    }
    return release(button);
}

bool WaylandInput::keyDown(quint32 keysym)
{
    if (!m_ready)
        return false;
    const auto connection = m_connections.value(m_keyboardOutput);
    return connection->key(keysym, true) || fail(connection->errorString());
}

bool WaylandInput::keyUp(quint32 keysym)
{
    if (!m_ready)
        return false;
    const auto connection = m_connections.value(m_keyboardOutput);
    return connection->key(keysym, false) || fail(connection->errorString());
}

bool WaylandInput::keyClick(quint32 keysym, const QList<quint32>& modifiers)
{
    for (quint32 modifier : modifiers) {
        if (!keyDown(modifier))
            return false;
    }
    bool ok = keyDown(keysym) && keyUp(keysym);
    for (auto it = modifiers.crbegin(); it != modifiers.crend(); ++it)
        ok = keyUp(*it) && ok;
    return ok;
}
