#pragma once

#include "DesktopTexts.h"

#include <QIcon>
#include <QWidget>

class QLabel;
class QPushButton;

// One window in two guises: the welcome shown once per user, and the about window of the menu.
class AboutController : public QWidget {
    Q_OBJECT
public:
    static constexpr int width = 540;
    static constexpr int height = 745;
    static constexpr int iconSize = 88;

    // desktop: where the window is shown; its texts say what is true there.
    explicit AboutController(bool firstLaunch, const DesktopFacts& desktop = {}, QWidget* parent = nullptr);

    // Brings the window to the front and gives it the keyboard.
    void showWindow();
    void dismiss();

    // The image of the given resource, or the application's icon when there is none.
    static QIcon icon(const QString& resource);
    // The row that names the version: its major and minor number, "v1.2" for 1.2.0.
    static QString versionLine(const QString& version);

    QLabel* iconView() const { return m_icon; }
    QPushButton* dismissButton() const { return m_button; }

private:
    QLabel* m_icon = nullptr;
    QPushButton* m_button = nullptr;
};
