#pragma once

#include "CaptureMode.h"
#include "Result.h"

#include <QByteArray>
#include <QString>
#include <optional>

// What a start of the program asks Vexet to do, and the one-line message that carries it to the
// Vexet already running: "reopen", "capture region|window|screen|video" or "settings" (UTF-8,
// without the line end).
class AppCommand {
public:
    enum class Kind {
        reopen, // the program was started again without a command
        capture, // a status-menu capture item, video included
        settings,
    };

    // Reopen.
    AppCommand() = default;
    static AppCommand capture(CaptureMode mode);
    static AppCommand settings();

    Kind kind() const { return m_kind; }
    // The mode of a capture; region for the other kinds.
    CaptureMode mode() const { return m_mode; }

    QByteArray message() const;
    // An unknown or malformed message is an error whose text says why.
    static Result<AppCommand> fromMessage(const QByteArray& message);

    // The word for a mode on the command line and in messages: "region", "window", "screen", "video".
    static QString modeName(CaptureMode mode);
    static std::optional<CaptureMode> modeNamed(const QString& name);
    // The command a desktop's keyboard settings run for a mode: "vexet --capture region".
    static QString captureCommandLine(CaptureMode mode);
    // Every mode word: "region, window, screen ya da video".
    static QString modeList();
    // Why a mode word was not understood, e.g. "Bilinmeyen yakalama türü: x (region, … olmalı)."
    static QString unknownModeText(const QString& name);

    friend bool operator==(const AppCommand&, const AppCommand&) = default;

private:
    Kind m_kind = Kind::reopen;
    CaptureMode m_mode = CaptureMode::region;
};
