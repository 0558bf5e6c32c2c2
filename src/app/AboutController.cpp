#include "AboutController.h"

#include "WindowHelpers.h"

#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QVersionNumber>

using namespace Qt::StringLiterals;

QIcon AboutController::icon(const QString& resource)
{
    QIcon named(resource);
    return named.isNull() ? QApplication::windowIcon() : named;
}

QString AboutController::versionLine(const QString& version)
{
    const QVersionNumber number = QVersionNumber::fromString(version);
    return u"Versiyon: v%1.%2 — Video Kaydı"_s.arg(number.majorVersion()).arg(number.minorVersion());
}

AboutController::AboutController(bool firstLaunch, const DesktopFacts& desktop, QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    setWindowTitle(firstLaunch ? u"Vexet’e hoş geldin"_s : u"Vexet hakkında"_s);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setFixedSize(width, height);

    auto* stack = new QVBoxLayout;
    stack->setSpacing(14);

    m_icon = new QLabel(this);
    m_icon->setFixedSize(iconSize, iconSize);
    m_icon->setPixmap(icon(u":/icons/AppIcon.svg"_s).pixmap(QSize(iconSize, iconSize), devicePixelRatioF()));
    m_icon->setScaledContents(true);
    m_icon->setAccessibleName(u"Vexet simgesi"_s);
    stack->addWidget(m_icon, 0, Qt::AlignLeft);

    const QFont body = WindowHelpers::systemFont(13);
    const QList<std::pair<QString, QFont>> rows {
        { u"Vexet"_s, WindowHelpers::systemFont(32, true) },
        { u"Hızlı yakala. Kolayca kırp ve kaydet."_s, WindowHelpers::systemFont(18) },
        { u"Program Yaratıcısı: Vexet ekibi"_s, body },
        { u"Sürüm: Ömür Boyu Ücretsiz"_s, body },
        { u"İletişim: projenin hata ve öneri takipçisi (Issues sayfası)"_s, body },
        { versionLine(QStringLiteral(VEXET_VERSION)), body },
        { u"Tamamen ücretsiz ekran görüntüsü ve video kaydı uygulaması. Reklam, abonelik, hesap veya "
          u"uygulama "
          u"içi satın alma yok."_s,
            body },
        { DesktopTexts::howToCapture(desktop), body },
        { DesktopTexts::privacy(desktop), WindowHelpers::systemFont(12) },
    };
    for (const auto& [text, font] : rows)
        stack->addWidget(WindowHelpers::wrappingLabel(text, font, this));

    m_button = WindowHelpers::button(firstLaunch ? u"Başlayalım"_s : u"Kapat"_s, this, [this] { dismiss(); });
    m_button->setDefault(true);
    stack->addWidget(m_button, 0, Qt::AlignLeft);

    WindowHelpers::install(stack, this, 24);
    WindowHelpers::addWindowActions(this);

    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

void AboutController::showWindow()
{
    show();
    raise();
    activateWindow();
}

void AboutController::dismiss()
{
    close();
}
