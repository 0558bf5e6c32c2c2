#include "InputGrab.h"

#include <QWindow>

using namespace Qt::StringLiterals;

InputGrab::InputGrab(QWindow& window, QObject* parent)
    : QObject(parent)
    , m_window(&window)
{
    m_retry.setInterval(25);
    connect(&m_retry, &QTimer::timeout, this, &InputGrab::tryToGrab);
}

InputGrab::~InputGrab()
{
    release();
}

void InputGrab::start()
{
    if (m_started)
        return;
    m_started = true;
    m_clock.start();
    tryToGrab();
}

void InputGrab::tryToGrab()
{
    if (!m_window)
        return;
    // Both or neither: a half grab would let keys or clicks reach other programs.
    m_grabbed = m_window->setKeyboardGrabEnabled(true) && m_window->setMouseGrabEnabled(true);
    if (m_grabbed) {
        m_retry.stop();
        Q_EMIT grabbed();
        return;
    }
    release();
    if (m_clock.elapsed() >= patienceMs) {
        Q_EMIT failed(u"Klavye ve fare alınamadı; başka bir program tutuyor."_s);
        return;
    }
    m_retry.start();
}

void InputGrab::release()
{
    m_retry.stop();
    m_grabbed = false;
    if (!m_window)
        return;
    m_window->setMouseGrabEnabled(false);
    m_window->setKeyboardGrabEnabled(false);
}
