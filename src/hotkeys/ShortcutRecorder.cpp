#include "ShortcutRecorder.h"

#include "Beeper.h"

#include <QGuiApplication>
#include <QKeyEvent>

using namespace Qt::StringLiterals;

ShortcutRecorder::ShortcutRecorder(const Shortcut& shortcut, QWidget* parent)
    : QPushButton(shortcut.display(), parent)
{
    setAutoDefault(false);
    connect(this, &QPushButton::clicked, this, &ShortcutRecorder::begin);
    // Recording never goes on while another application has the keyboard.
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive && m_recording)
            finish();
    });
}

ShortcutRecorder::~ShortcutRecorder()
{
    if (m_recording)
        qApp->removeEventFilter(this);
}

QString ShortcutRecorder::recordingTitle()
{
    return u"Tuşlara bas… (Esc: iptal)"_s;
}

void ShortcutRecorder::begin()
{
    if (m_recording) {
        finish();
        return;
    }
    m_previousTitle = text();
    setText(recordingTitle());
    m_recording = true;
    if (onBegin)
        onBegin();
    if (m_recording)
        qApp->installEventFilter(this);
}

void ShortcutRecorder::finish()
{
    if (m_recording) {
        qApp->removeEventFilter(this);
        m_recording = false;
    }
    setText(m_previousTitle);
    if (onEnd)
        onEnd();
}

bool ShortcutRecorder::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // Claimed, so that no window shortcut (Ctrl+Q, Ctrl+S, …) fires while recording.
        event->accept();
        return true;
    case QEvent::KeyPress:
        // A key press is delivered to the focus widget and then to its parents; take it once.
        if (watched->isWidgetType() || watched->isWindowType())
            keyPressed(*static_cast<QKeyEvent*>(event));
        return true;
    case QEvent::KeyRelease:
        return true;
    default:
        return false;
    }
}

void ShortcutRecorder::keyPressed(const QKeyEvent& event)
{
    if (!m_recording || event.isAutoRepeat())
        return;
    if (event.key() == Qt::Key_Escape) {
        finish();
        return;
    }
    if (Shortcut::isModifierKey(event.key()) || event.key() == Qt::Key_NumLock)
        return; // holding modifiers on the way to the key is no attempt yet
    const std::optional<Shortcut> shortcut = Shortcut::from(event);
    if (!shortcut) {
        Beeper::beep();
        return;
    }
    finish();
    if (onRecord)
        onRecord(*shortcut);
}
