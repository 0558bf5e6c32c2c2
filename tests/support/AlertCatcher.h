#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>

// Answers the program's modal alerts while it lives: records each one's title, message,
// informative text and buttons, then presses the button at `answer`.
class AlertCatcher : public QObject {
public:
    explicit AlertCatcher(int answer = 0)
        : m_answer(answer)
    {
        m_poll.setInterval(20);
        QObject::connect(&m_poll, &QTimer::timeout, this, [this] { answerOpenAlert(); });
        m_poll.start();
    }

    // Every alert seen so far: { title, message, informative text, button titles... }.
    const QList<QStringList>& alerts() const { return m_alerts; }

private:
    void answerOpenAlert()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        QStringList texts { box->windowTitle(), box->text(), box->informativeText() };
        const QList<QAbstractButton*> buttons = box->buttons();
        for (const QAbstractButton* button : buttons)
            texts.append(button->text());
        m_alerts.append(texts);
        if (m_answer < buttons.size())
            buttons.at(m_answer)->click();
        else
            box->reject();
    }

    QTimer m_poll;
    int m_answer;
    QList<QStringList> m_alerts;
};
