#include "AppCommand.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

const QByteArray reopenWord = "reopen";
const QByteArray captureWord = "capture";
const QByteArray settingsWord = "settings";

Error commandError(const QString& text)
{
    return Error(u"Vexet.Command"_s, 1, text);
}

// A message quoted back in an error reply stays one short, printable line.
QString quoted(const QByteArray& message)
{
    constexpr qsizetype longest = 60;
    QString text = QString::fromUtf8(message);
    const bool cut = text.size() > longest;
    text.truncate(longest);
    for (QChar& c : text) {
        if (!c.isPrint())
            c = u'?';
    }
    return cut ? text + u'…' : text;
}

} // namespace

AppCommand AppCommand::capture(CaptureMode mode)
{
    AppCommand command;
    command.m_kind = Kind::capture;
    command.m_mode = mode;
    return command;
}

AppCommand AppCommand::settings()
{
    AppCommand command;
    command.m_kind = Kind::settings;
    return command;
}

QByteArray AppCommand::message() const
{
    switch (m_kind) {
    case Kind::reopen:
        return reopenWord;
    case Kind::capture:
        return captureWord + ' ' + modeName(m_mode).toUtf8();
    case Kind::settings:
        return settingsWord;
    }
    return QByteArray();
}

Result<AppCommand> AppCommand::fromMessage(const QByteArray& message)
{
    if (message == reopenWord)
        return AppCommand();
    if (message == settingsWord)
        return settings();
    if (message == captureWord)
        return commandError(u"capture komutu bir yakalama türü ister: %1."_s.arg(modeList()));
    const QList<QByteArray> words = message.split(' ');
    if (words.size() == 2 && words.first() == captureWord) {
        const QString name = QString::fromUtf8(words.last());
        if (const std::optional<CaptureMode> mode = modeNamed(name))
            return capture(*mode);
        return commandError(unknownModeText(quoted(words.last())));
    }
    if (message.isEmpty())
        return commandError(u"Boş komut."_s);
    return commandError(u"Anlaşılmayan komut: %1"_s.arg(quoted(message)));
}

QString AppCommand::modeName(CaptureMode mode)
{
    switch (mode) {
    case CaptureMode::region:
        return u"region"_s;
    case CaptureMode::window:
        return u"window"_s;
    case CaptureMode::screen:
        return u"screen"_s;
    case CaptureMode::video:
        return u"video"_s;
    }
    return QString();
}

std::optional<CaptureMode> AppCommand::modeNamed(const QString& name)
{
    for (CaptureMode mode : CaptureModes::allCases) {
        if (modeName(mode) == name)
            return mode;
    }
    return std::nullopt;
}

QString AppCommand::captureCommandLine(CaptureMode mode)
{
    return u"vexet --capture "_s + modeName(mode);
}

QString AppCommand::unknownModeText(const QString& name)
{
    return u"Bilinmeyen yakalama türü: %1 (%2 olmalı)."_s.arg(name, modeList());
}

QString AppCommand::modeList()
{
    QStringList names;
    for (CaptureMode mode : CaptureModes::allCases)
        names.append(modeName(mode));
    const QString last = names.takeLast();
    return names.join(u", "_s) + u" ya da "_s + last;
}
