#include "WindowHelpers.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QEvent>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace WindowHelpers {

QPushButton* button(const QString& title, QWidget* parent, std::function<void()> action)
{
    auto* result = new QPushButton(title, parent);
    result->setAutoDefault(false);
    QObject::connect(result, &QPushButton::clicked, result, [action = std::move(action)] {
        if (action)
            action();
    });
    return result;
}

void install(QBoxLayout* layout, QWidget* container, int padding)
{
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->addStretch(1);
    container->setLayout(layout);
}

QLabel* wrappingLabel(const QString& text, const QFont& font, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setFont(font);
    label->setWordWrap(true);
    label->setMaximumWidth(wrapWidth);
    label->setTextFormat(Qt::PlainText);
    label->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    return label;
}

QFont systemFont(int pixelSize, bool bold)
{
    QFont font = QApplication::font();
    font.setPixelSize(pixelSize);
    font.setBold(bold);
    return font;
}

void addWindowActions(QWidget* window)
{
    auto* quit = new QAction(u"Vexet’ten çık"_s, window);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setShortcutContext(Qt::WindowShortcut);
    // The application object receives the quit request like any other one (menu, signal, session)
    // and decides whether it may quit now.
    QObject::connect(quit, &QAction::triggered, window,
        [] { QCoreApplication::postEvent(QCoreApplication::instance(), new QEvent(QEvent::Quit)); });
    window->addAction(quit);
}

} // namespace WindowHelpers
