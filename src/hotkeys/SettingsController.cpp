#include "SettingsController.h"

#include "Alert.h"
#include "AppCommand.h"
#include "DesktopTexts.h"
#include "HotKeysInterface.h"
#include "Preferences.h"
#include "ShortcutRecorder.h"
#include "WindowHelpers.h"

#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    QString title;
    QString lead;
    QString note;
};

Texts textsFor(ShortcutBinder binder)
{
    const QString copyNote = u"Kırpılmış resmi panoya almak için önizlemede Kopyala’ya bas. "_s;
    switch (binder) {
    case ShortcutBinder::program:
        break;
    case ShortcutBinder::desktop:
        return { u"Kısayollar"_s,
            u"Bu masaüstünde kısayolları masaüstün atar; Vexet ilk açılışta kendi birleşimlerini önerir. "
            u"Her komutun yanında masaüstünün atadığı tuşlar görünür."_s,
            copyNote + u"Kısayollar, Vexet açıkken diğer uygulamalarda da çalışır."_s };
    case ShortcutBinder::user:
        return { u"Kısayollar"_s,
            u"Bu masaüstü kısayolları kendisi atar ve uygulamalara vermez. Aşağıdaki komutları "
            u"masaüstünün ayarlarındaki klavye kısayolları bölümüne ekleyip her birine bir tuş ata."_s,
            copyNote + u"Komutlar, Vexet kapalıyken onu da başlatır."_s };
    }
    return { u"Kendi kısayollarını belirle"_s,
        u"Kısayola tıkla, ardından yeni tuş birleşimine bas. En az ⌘, ⌥ veya ⌃ kullan. İptal etmek için Esc’ye bas."_s,
        copyNote + u"Kısayollar, Vexet açıkken diğer uygulamalarda da çalışır."_s };
}

} // namespace

SettingsController::SettingsController(HotKeysInterface& hotKeys, Preferences& preferences, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_hotKeys(hotKeys)
    , m_preferences(preferences)
    , m_binder(hotKeys.binder())
{
    setWindowTitle(u"Vexet — Ayarlar"_s);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setFixedSize(width, height);
    setAttribute(Qt::WA_QuitOnClose, false);

    m_stack = new QVBoxLayout;
    m_stack->setSpacing(14);
    m_copy = new QCheckBox(u"Çekimden sonra orijinali otomatik panoya kopyala"_s, this);
    m_copy->setChecked(m_preferences.copyAutomatically());
    connect(m_copy, &QCheckBox::toggled, this, &SettingsController::copyChanged);
    m_stack->addWidget(m_copy);
    m_note = WindowHelpers::wrappingLabel(QString(), WindowHelpers::systemFont(12), this);
    m_stack->addWidget(m_note);
    m_reset = WindowHelpers::button(u"Varsayılan kısayolları geri yükle"_s, this, [this] { reset(); });
    m_stack->addWidget(m_reset, 0, Qt::AlignLeft);
    buildShortcuts();

    WindowHelpers::install(m_stack, this, 24);
    WindowHelpers::addWindowActions(this);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

void SettingsController::buildShortcuts()
{
    stopRecording();
    delete m_shortcuts;
    m_recorders.clear();
    m_triggers.clear();
    m_commands.clear();
    m_commandCopies.clear();
    m_configure = nullptr;

    const Texts texts = textsFor(m_binder);
    m_shortcuts = new QWidget(this);
    auto* stack = new QVBoxLayout(m_shortcuts);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(14);
    stack->addWidget(
        WindowHelpers::wrappingLabel(texts.title, WindowHelpers::systemFont(22, true), m_shortcuts));
    stack->addWidget(WindowHelpers::wrappingLabel(texts.lead, WindowHelpers::systemFont(13), m_shortcuts));
    for (CaptureMode mode : CaptureModes::allCases)
        stack->addWidget(makeRow(mode));
    if (m_binder == ShortcutBinder::desktop) {
        if (m_hotKeys.canConfigure()) {
            m_configure = WindowHelpers::button(
                u"Masaüstünün kısayol ayarlarını aç"_s, m_shortcuts, [this] { m_hotKeys.configure(); });
            stack->addWidget(m_configure, 0, Qt::AlignLeft);
        } else {
            stack->addWidget(WindowHelpers::wrappingLabel(
                DesktopTexts::desktopShortcutsPlace(), WindowHelpers::systemFont(13), m_shortcuts));
        }
    }
    m_stack->insertWidget(0, m_shortcuts);
    m_note->setText(texts.note);
    m_reset->setVisible(m_binder == ShortcutBinder::program);
}

QWidget* SettingsController::makeRow(CaptureMode mode)
{
    auto* row = new QWidget(m_shortcuts);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    QLabel* title
        = WindowHelpers::wrappingLabel(CaptureModes::title(mode), WindowHelpers::systemFont(13), row);
    title->setFixedWidth(195);
    layout->addWidget(title);
    switch (m_binder) {
    case ShortcutBinder::program:
        layout->addWidget(makeRecorder(mode));
        break;
    case ShortcutBinder::desktop:
        layout->addWidget(makeTrigger(mode));
        break;
    case ShortcutBinder::user:
        layout->addWidget(makeCommand(mode));
        break;
    }
    layout->addStretch(1);
    return row;
}

QWidget* SettingsController::makeTrigger(CaptureMode mode)
{
    auto* trigger = new QLabel(m_shortcuts);
    trigger->setFont(WindowHelpers::systemFont(13, true));
    trigger->setTextInteractionFlags(Qt::TextSelectableByMouse);
    trigger->setFixedWidth(295);
    m_triggers.insert(mode, trigger);
    showTriggers();
    return trigger;
}

void SettingsController::showTriggers()
{
    for (auto trigger = m_triggers.cbegin(); trigger != m_triggers.cend(); ++trigger) {
        const QString label = m_hotKeys.label(trigger.key());
        trigger.value()->setText(label.isEmpty() ? u"Atanmamış"_s : label);
    }
}

QWidget* SettingsController::makeCommand(CaptureMode mode)
{
    auto* box = new QWidget(m_shortcuts);
    auto* layout = new QHBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* command = new QLineEdit(AppCommand::captureCommandLine(mode), box);
    command->setReadOnly(true);
    command->setFixedWidth(220);
    command->setAccessibleName(CaptureModes::title(mode));
    layout->addWidget(command);
    QPushButton* copy = WindowHelpers::button(
        u"Kopyala"_s, box, [text = command->text()] { QGuiApplication::clipboard()->setText(text); });
    copy->setAccessibleName(u"Kopyala: "_s + CaptureModes::title(mode));
    layout->addWidget(copy);
    m_commands.insert(mode, command);
    m_commandCopies.insert(mode, copy);
    return box;
}

void SettingsController::shortcutsChanged()
{
    if (m_binder != m_hotKeys.binder()) {
        m_binder = m_hotKeys.binder();
        buildShortcuts();
        return;
    }
    showTriggers();
}

ShortcutRecorder* SettingsController::makeRecorder(CaptureMode mode)
{
    auto* recorder = new ShortcutRecorder(m_preferences.shortcut(mode), m_shortcuts);
    recorder->setFixedWidth(295);
    // Its title is the combination; the row's label says which capture it belongs to.
    recorder->setAccessibleDescription(
        u"%1 kısayolu. Değiştirmek için tıkla, ardından yeni tuş birleşimine bas."_s.arg(
            CaptureModes::title(mode)));
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
    if (m_binder != ShortcutBinder::program)
        return; // the desktop's bindings are changed only in its own settings
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
