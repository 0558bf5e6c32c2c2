#include "StatusWindow.h"

#include "DesktopTexts.h"
#include "WindowHelpers.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

StatusWindow::StatusWindow(const Actions& actions, QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    setWindowTitle(u"Vexet"_s);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setAttribute(Qt::WA_QuitOnClose, false);

    auto* stack = new QVBoxLayout;
    stack->setSpacing(10);
    stack->addWidget(
        WindowHelpers::wrappingLabel(DesktopTexts::noTray(), WindowHelpers::systemFont(13), this));
    const auto add = [this, stack](const QString& title, std::function<void()> action) {
        QPushButton* made = WindowHelpers::button(title, this, std::move(action));
        stack->addWidget(made);
        return made;
    };
    for (CaptureMode mode : CaptureModes::allCases) {
        m_buttons.insert(mode, add(CaptureModes::title(mode), [capture = actions.capture, mode] {
            if (capture)
                capture(mode);
        }));
    }
    m_status = WindowHelpers::wrappingLabel({}, WindowHelpers::systemFont(13, true), this);
    m_status->hide();
    stack->addWidget(m_status);
    for (const auto& [title, action] : { std::pair { u"Ayarlar…"_s, actions.openSettings },
             std::pair { u"Vexet hakkında"_s, actions.openAbout }, std::pair { u"Çıkış"_s, actions.quit } }) {
        add(title, [action] {
            if (action)
                action();
        });
    }
    WindowHelpers::install(stack, this, 18);
    WindowHelpers::addWindowActions(this);
}

void StatusWindow::setTitle(CaptureMode mode, const QString& title)
{
    if (QPushButton* target = button(mode))
        target->setText(title);
}

void StatusWindow::setStatus(bool busy, const QString& text)
{
    m_status->setText(busy ? text : QString());
    m_status->setVisible(busy && !text.isEmpty());
}

void StatusWindow::showWindow()
{
    if (!isVisible()) {
        adjustSize();
        if (const QScreen* screen = QGuiApplication::primaryScreen())
            move(screen->availableGeometry().center() - rect().center());
    }
    show();
    raise();
    activateWindow();
}
