#include "SettingsController.h"

#include "Alert.h"
#include "HotKeysInterface.h"
#include "Preferences.h"
#include "ShortcutRecorder.h"
#include "WindowHelpers.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

SettingsController::SettingsController(HotKeysInterface& hotKeys, Preferences& preferences, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_hotKeys(hotKeys)
    , m_preferences(preferences)
{
    setWindowTitle(u"Vexet — Ayarlar"_s);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setFixedSize(width, height);
    setAttribute(Qt::WA_QuitOnClose, false);

    auto* stack = new QVBoxLayout;
    stack->setSpacing(14);
    stack->addWidget(WindowHelpers::wrappingLabel(
        u"Kendi kısayollarını belirle"_s, WindowHelpers::systemFont(22, true), this));
    stack->addWidget(WindowHelpers::wrappingLabel(
        u"Kısayola tıkla, ardından yeni tuş birleşimine bas. En az ⌘, ⌥ veya ⌃ kullan. İptal etmek için Esc’ye bas."_s,
        WindowHelpers::systemFont(13), this));

    for (CaptureMode mode : CaptureModes::allCases) {
        auto* row = new QHBoxLayout;
        row->setSpacing(12);
        QLabel* title
            = WindowHelpers::wrappingLabel(CaptureModes::title(mode), WindowHelpers::systemFont(13), this);
        title->setFixedWidth(195);
        row->addWidget(title);
        row->addWidget(makeRecorder(mode));
        row->addStretch(1);
        stack->addLayout(row);
    }

    m_copy = new QCheckBox(u"Çekimden sonra orijinali otomatik panoya kopyala"_s, this);
    m_copy->setChecked(m_preferences.copyAutomatically());
    connect(m_copy, &QCheckBox::toggled, this, &SettingsController::copyChanged);
    stack->addWidget(m_copy);
    stack->addWidget(
        WindowHelpers::wrappingLabel(u"Kırpılmış resmi panoya almak için önizlemede Kopyala’ya bas. "
                                     u"Kısayollar, Vexet açıkken diğer uygulamalarda da çalışır."_s,
            WindowHelpers::systemFont(12), this));
    m_reset = WindowHelpers::button(u"Varsayılan kısayolları geri yükle"_s, this, [this] { reset(); });
    stack->addWidget(m_reset, 0, Qt::AlignLeft);

    WindowHelpers::install(stack, this, 24);
    WindowHelpers::addWindowActions(this);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

ShortcutRecorder* SettingsController::makeRecorder(CaptureMode mode)
{
    auto* recorder = new ShortcutRecorder(m_preferences.shortcut(mode), this);
    recorder->setFixedWidth(295);
    QPointer<SettingsController> self(this);
    recorder->onBegin = [self, recorder] {
        if (!self)
            return;
        // One recorder at a time, and no global shortcut fires while one records.
        for (ShortcutRecorder* other : std::as_const(self->m_recorders)) {
            if (other != recorder && other->isRecording())
                other->finish();
        }
        self->m_hotKeys.suspend();
    };
    recorder->onEnd = [self] {
        if (self)
            self->m_hotKeys.resume();
    };
    recorder->onRecord = [self, mode](const Shortcut& shortcut) {
        if (self)
            self->apply(shortcut, mode);
    };
    m_recorders.insert(mode, recorder);
    return recorder;
}

void SettingsController::showWindow()
{
    show();
    raise();
    activateWindow();
}

void SettingsController::apply(const Shortcut& shortcut, CaptureMode mode)
{
    for (CaptureMode other : CaptureModes::allCases) {
        if (other != mode && m_preferences.shortcut(other) == shortcut) {
            Alert::show(u"Kısayol zaten kullanılıyor"_s,
                u"Diğer yakalama işlemleri için farklı bir tuş birleşimi seç."_s);
            return;
        }
    }
    const Shortcut old = m_preferences.shortcut(mode);
    const int status = m_hotKeys.registerShortcut(shortcut, mode);
    if (status == 0) {
        m_preferences.set(shortcut, mode);
        m_recorders.value(mode)->setText(shortcut.display());
        if (onChange)
            onChange();
        return;
    }
    m_hotKeys.registerShortcut(old, mode);
    Alert::show(u"Kısayol atanamadı"_s,
        u"Bu birleşim sistem veya başka bir uygulama tarafından kullanılıyor olabilir. Farklı bir birleşim "
        u"seç. "
        u"Hata: "_s
            + QString::number(status));
}

void SettingsController::copyChanged(bool on)
{
    m_preferences.setCopyAutomatically(on);
}

void SettingsController::stopRecording()
{
    for (ShortcutRecorder* recorder : std::as_const(m_recorders)) {
        if (recorder->isRecording())
            recorder->finish();
    }
}

void SettingsController::reset()
{
    stopRecording();
    m_hotKeys.suspend();
    for (CaptureMode mode : CaptureModes::allCases) {
        const Shortcut shortcut = Shortcut::defaultShortcut(mode);
        m_preferences.set(shortcut, mode);
        m_recorders.value(mode)->setText(shortcut.display());
    }
    const QStringList failures = m_hotKeys.resume();
    if (onChange)
        onChange();
    if (!failures.isEmpty())
        Alert::show(u"Bazı kısayollar kullanılamıyor"_s, failures.join(u'\n'));
}

void SettingsController::closeEvent(QCloseEvent* event)
{
    stopRecording();
    QWidget::closeEvent(event);
}
