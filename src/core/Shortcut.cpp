#include "Shortcut.h"

#include "KeyTable.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QKeyEvent>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

const auto keyCodeKey = "keyCode"_L1;
const auto modifiersKey = "modifiers"_L1;
const auto keyLabelKey = "keyLabel"_L1;

// The labels of keys whose face is a symbol or a name rather than a character.
struct NamedKey {
    quint32 keyCode;
    const char16_t* label;
};

constexpr std::array<NamedKey, 25> namedKeys { {
    { 36, u"↩" },
    { 48, u"⇥" },
    { 49, u"Boşluk" },
    { 51, u"⌫" },
    { 117, u"⌦" },
    { 123, u"←" },
    { 124, u"→" },
    { 125, u"↓" },
    { 126, u"↑" },
    { 122, u"F1" },
    { 120, u"F2" },
    { 99, u"F3" },
    { 118, u"F4" },
    { 96, u"F5" },
    { 97, u"F6" },
    { 98, u"F7" },
    { 100, u"F8" },
    { 101, u"F9" },
    { 109, u"F10" },
    { 103, u"F11" },
    { 111, u"F12" },
    { 115, u"Home" },
    { 119, u"End" },
    { 116, u"PgUp" },
    { 121, u"PgDn" },
} };

// An unsigned 32-bit JSON integer: a number without a fractional part inside 0...2^32 - 1.
std::optional<quint32> unsignedValue(const QJsonValue& value)
{
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    if (!std::isfinite(number) || number < 0 || number > 4294967295.0 || std::trunc(number) != number)
        return std::nullopt;
    return static_cast<quint32>(number);
}

bool isPrintableLabel(const QString& text)
{
    if (text.isEmpty())
        return false;
    for (QChar c : text) {
        if (c.isSpace() || !(c.isPrint() || c.isSurrogate()))
            return false;
    }
    return true;
}

QString label(const KeyInfo& key, const QString& text)
{
    for (const NamedKey& named : namedKeys) {
        if (named.keyCode == key.keyCode)
            return QString::fromUtf16(named.label);
    }
    if (key.face)
        return QString::fromUtf16(key.face).toUpper();
    if (isPrintableLabel(text))
        return text.toUpper();
    return u"Tuş "_s + QString::number(key.keyCode);
}

} // namespace

QString Shortcut::display() const
{
    QString text;
    if (modifiers & controlKey)
        text += u"⌃"_s;
    if (modifiers & optionKey)
        text += u"⌥"_s;
    if (modifiers & shiftKey)
        text += u"⇧"_s;
    if (modifiers & cmdKey)
        text += u"⌘"_s;
    return text + keyLabel;
}

QByteArray Shortcut::toJson() const
{
    const QJsonObject object {
        { keyCodeKey, static_cast<qint64>(keyCode) },
        { modifiersKey, static_cast<qint64>(modifiers) },
        { keyLabelKey, keyLabel },
    };
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<Shortcut> Shortcut::fromJson(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    const std::optional<quint32> code = unsignedValue(object.value(keyCodeKey));
    const std::optional<quint32> mask = unsignedValue(object.value(modifiersKey));
    const QJsonValue text = object.value(keyLabelKey);
    if (!code || !mask || !text.isString())
        return std::nullopt;
    return Shortcut { *code, *mask, text.toString() };
}

std::optional<Shortcut> Shortcut::from(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers flags = event.modifiers();
    if (!(flags & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return std::nullopt;
    if (Shortcut::isModifierKey(event.key()))
        return std::nullopt;

    // The keysym names the key on the active layout; Qt's key is the fallback for events without one.
    std::optional<KeyInfo> key = KeyTable::byKeysym(event.nativeVirtualKey());
    if (!key)
        key = KeyTable::byQtKey(event.key(), flags.testFlag(Qt::KeypadModifier));
    if (!key || KeyTable::isModifierKey(key->keyCode))
        return std::nullopt;

    quint32 mask = 0;
    if (flags & Qt::MetaModifier)
        mask |= cmdKey;
    if (flags & Qt::ShiftModifier)
        mask |= shiftKey;
    if (flags & Qt::AltModifier)
        mask |= optionKey;
    if (flags & Qt::ControlModifier)
        mask |= controlKey;
    return Shortcut { key->keyCode, mask, label(*key, event.text()) };
}

Shortcut Shortcut::defaultShortcut(CaptureMode mode)
{
    constexpr quint32 mask = cmdKey | shiftKey | optionKey;
    switch (mode) {
    case CaptureMode::region:
        return { 20, mask, u"3"_s };
    case CaptureMode::window:
        return { 21, mask, u"4"_s };
    case CaptureMode::screen:
        return { 23, mask, u"5"_s };
    case CaptureMode::video:
        return { 5, mask, u"G"_s };
    }
    return {};
}

bool Shortcut::isModifierKey(int qtKey)
{
    switch (qtKey) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_Mode_switch:
        return true;
    default:
        return false;
    }
}
