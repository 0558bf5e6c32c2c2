#include "RecordCheckArguments.h"

using namespace Qt::StringLiterals;

QString RecordCheckArguments::usage()
{
    return u"Usage: vexet-record-check [OPTIONS] --out FILE\n"
           u"Records with the real engine and prints every state it passes through.\n\n"
           u"  --display NAME|ID     a whole monitor (RandR output name or id; default: the first)\n"
           u"  --region NAME:X,Y,W,H a rectangle of a monitor, in the monitor's own coordinates\n"
           u"  --window XID          a window (decimal or 0x…)\n"
           u"  --seconds S           stop S seconds after recording began (default 5)\n"
           u"  --stop-after-ms MS    stop MS milliseconds after the start, whatever the state\n"
           u"  --fps 30|60           frame rate (default 30)\n"
           u"  --quality 0|1|2       frame-size limit (default 0: 1920 × 1080)\n"
           u"  --no-system-audio     leave the system audio out\n"
           u"  --microphone          record the default microphone too\n"
           u"  --no-cursor           leave the pointer out\n"
           u"  --preset NAME         the encoder's speed preset (benchmarks)\n"
           u"  --heartbeat           time a 10 ms timer on the main thread and print its longest gap in\n"
           u"                        each phase: \"<ms> heartbeat <phase> <gap ms> at <ms>\" (benchmarks)\n\n"
           u"Output: \"<ms> status <state> <text>\" lines, \"<ms> recorded <seconds>\" at the stop, and\n"
           u"\"<ms> finished ok <path>\" or \"<ms> finished error <message>\". Exit status 0 on success, 1 "
           u"on\n"
           u"a failed recording, 3 on a cancelled one, 2 for a bad command line.\n"_s;
}

std::optional<RecordCheckArguments> RecordCheckArguments::parse(
    const QStringList& arguments, QString* problem)
{
    RecordCheckArguments result;
    result.options.microphone = false;
    result.options.systemAudio = true;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& option = arguments.at(i);
        const auto value = [&]() -> std::optional<QString> {
            if (i + 1 >= arguments.size())
                return std::nullopt;
            return arguments.at(++i);
        };
        bool ok = true;
        if (option == u"--display"_s) {
            const auto name = value();
            ok = name.has_value();
            result.kind = Kind::Display;
            result.display = name.value_or(QString());
        } else if (option == u"--region"_s) {
            const auto regionText = value();
            const qsizetype colon = regionText ? regionText->indexOf(u':') : -1;
            ok = colon >= 0;
            if (ok) {
                result.kind = Kind::Region;
                result.display = regionText->left(colon);
                result.region = regionText->mid(colon + 1);
            }
        } else if (option == u"--window"_s) {
            const auto id = value();
            result.kind = Kind::Window;
            result.window = id ? id->toUInt(&ok, 0) : 0;
            ok = ok && id && result.window != 0;
        } else if (option == u"--out"_s) {
            const auto path = value();
            ok = path.has_value();
            result.output = path.value_or(QString());
        } else if (option == u"--seconds"_s) {
            const auto seconds = value();
            result.seconds = seconds ? seconds->toDouble(&ok) : 0;
            ok = ok && seconds && result.seconds >= 0;
        } else if (option == u"--stop-after-ms"_s) {
            const auto ms = value();
            result.stopAfterStartMs = ms ? ms->toDouble(&ok) : 0;
            ok = ok && ms && result.stopAfterStartMs >= 0;
        } else if (option == u"--fps"_s) {
            const auto fps = value();
            result.options.fps = fps ? fps->toInt(&ok) : 0;
            ok = ok && (result.options.fps == 30 || result.options.fps == 60);
        } else if (option == u"--quality"_s) {
            const auto quality = value();
            result.options.quality = quality ? quality->toInt(&ok) : -1;
            ok = ok && result.options.quality >= 0 && result.options.quality <= 2;
        } else if (option == u"--no-system-audio"_s) {
            result.options.systemAudio = false;
        } else if (option == u"--microphone"_s) {
            result.options.microphone = true;
        } else if (option == u"--no-cursor"_s) {
            result.options.cursor = false;
        } else if (option == u"--preset"_s) {
            const auto preset = value();
            ok = preset.has_value();
            result.preset = preset.value_or(QString());
        } else if (option == u"--heartbeat"_s) {
            result.heartbeat = true;
        } else {
            ok = false;
        }
        if (!ok) {
            *problem = u"bad or incomplete option: "_s + option;
            return std::nullopt;
        }
    }
    if (result.output.isEmpty()) {
        *problem = u"--out FILE is required"_s;
        return std::nullopt;
    }
    return result;
}
