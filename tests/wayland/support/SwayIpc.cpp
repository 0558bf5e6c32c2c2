#include "SwayIpc.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QTest>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

QRect rectOf(const QJsonValue& value)
{
    const QJsonObject rect = value.toObject();
    return QRect(
        rect[u"x"_s].toInt(), rect[u"y"_s].toInt(), rect[u"width"_s].toInt(), rect[u"height"_s].toInt());
}

// Depth-first through the tree: every node with a process is a window; `output` is the name of
// the output node above it.
void collectWindows(const QJsonObject& node, const QString& output, QList<SwayIpc::Window>& windows)
{
    const QString type = node[u"type"_s].toString();
    const QString here = type == u"output"_s ? node[u"name"_s].toString() : output;
    if (node.contains(u"pid"_s) && (type == u"con"_s || type == u"floating_con"_s)) {
        SwayIpc::Window window;
        window.id = node[u"id"_s].toInteger();
        window.pid = node[u"pid"_s].toInteger();
        window.appId = node[u"app_id"_s].toString();
        window.title = node[u"name"_s].toString();
        window.output = here;
        window.rect = rectOf(node[u"rect"_s]);
        window.focused = node[u"focused"_s].toBool();
        window.visible = node[u"visible"_s].toBool();
        window.fullscreen = node[u"fullscreen_mode"_s].toInt() != 0;
        windows.append(window);
    }
    for (const auto* key : { "nodes", "floating_nodes" }) {
        for (const QJsonValue& child : node[QLatin1StringView(key)].toArray())
            collectWindows(child.toObject(), here, windows);
    }
}

} // namespace

SwayIpc::~SwayIpc()
{
    restoreOutputScales();
}

std::optional<QByteArray> SwayIpc::run(const QStringList& arguments)
{
    QProcess swaymsg;
    swaymsg.start(u"swaymsg"_s, arguments);
    if (!swaymsg.waitForFinished(20000)) {
        m_error = u"swaymsg %1: %2"_s.arg(arguments.join(u' '), swaymsg.errorString());
        swaymsg.kill();
        swaymsg.waitForFinished();
        return std::nullopt;
    }
    const QByteArray out = swaymsg.readAllStandardOutput();
    if (swaymsg.exitStatus() != QProcess::NormalExit || swaymsg.exitCode() != 0) {
        m_error = u"swaymsg %1 failed: %2%3"_s.arg(
            arguments.join(u' '), QString::fromUtf8(out), QString::fromUtf8(swaymsg.readAllStandardError()));
        return std::nullopt;
    }
    return out;
}

std::optional<QJsonDocument> SwayIpc::query(const QString& type)
{
    const std::optional<QByteArray> out = run({ u"-r"_s, u"-t"_s, type });
    if (!out)
        return std::nullopt;
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(*out, &error);
    if (error.error != QJsonParseError::NoError) {
        m_error = u"swaymsg -t %1: %2"_s.arg(type, error.errorString());
        return std::nullopt;
    }
    return document;
}

bool SwayIpc::command(const QString& commands)
{
    const std::optional<QByteArray> out = run({ u"-r"_s, u"--"_s, commands });
    if (!out)
        return false;
    const QJsonArray results = QJsonDocument::fromJson(*out).array();
    for (const QJsonValue& result : results) {
        if (!result[u"success"_s].toBool()) {
            m_error = u"sway refused \"%1\": %2"_s.arg(commands, result[u"error"_s].toString());
            return false;
        }
    }
    return !results.isEmpty();
}

QList<SwayIpc::Output> SwayIpc::outputs()
{
    QList<Output> outputs;
    const std::optional<QJsonDocument> reply = query(u"get_outputs"_s);
    if (!reply)
        return outputs;
    for (const QJsonValue& value : reply->array()) {
        const QJsonObject object = value.toObject();
        Output output;
        output.name = object[u"name"_s].toString();
        output.rect = rectOf(object[u"rect"_s]);
        const QJsonObject mode = object[u"current_mode"_s].toObject();
        output.modeSize = QSize(mode[u"width"_s].toInt(), mode[u"height"_s].toInt());
        output.scale = object[u"scale"_s].toDouble(1.0);
        output.focused = object[u"focused"_s].toBool();
        output.active = object[u"active"_s].toBool();
        outputs.append(output);
    }
    return outputs;
}

std::optional<SwayIpc::Output> SwayIpc::output(const QString& name)
{
    for (const Output& output : outputs()) {
        if (output.name == name)
            return output;
    }
    m_error = u"no output %1"_s.arg(name);
    return std::nullopt;
}

std::optional<SwayIpc::Output> SwayIpc::outputAt(QPoint point)
{
    for (const Output& output : outputs()) {
        if (output.active && output.rect.contains(point))
            return output;
    }
    m_error = u"no output at %1,%2"_s.arg(point.x()).arg(point.y());
    return std::nullopt;
}

QList<SwayIpc::Window> SwayIpc::windows()
{
    QList<Window> windows;
    if (const std::optional<QJsonDocument> tree = query(u"get_tree"_s))
        collectWindows(tree->object(), QString(), windows);
    return windows;
}

QList<SwayIpc::Window> SwayIpc::windowsOf(qint64 pid)
{
    QList<Window> windows = this->windows();
    windows.removeIf([pid](const Window& window) { return window.pid != pid; });
    return windows;
}

std::optional<SwayIpc::Window> SwayIpc::waitForWindow(qint64 pid, const QString& title, int timeoutMs)
{
    std::optional<Window> found;
    const bool arrived = QTest::qWaitFor(
        [&] {
            for (const Window& window : windowsOf(pid)) {
                if (title.isEmpty() || window.title == title) {
                    found = window;
                    return true;
                }
            }
            return false;
        },
        timeoutMs);
    if (!arrived)
        m_error = u"no window \"%1\" of process %2 within %3 ms"_s.arg(title).arg(pid).arg(timeoutMs);
    return found;
}

std::optional<SwayIpc::Window> SwayIpc::waitForWindowState(
    qint64 id, const std::function<bool(const Window&)>& condition, int timeoutMs)
{
    std::optional<Window> found;
    const bool arrived = QTest::qWaitFor(
        [&] {
            for (const Window& window : windows()) {
                if (window.id == id && condition(window)) {
                    found = window;
                    return true;
                }
            }
            return false;
        },
        timeoutMs);
    if (!arrived)
        m_error = u"window %1 did not reach the wanted state within %2 ms"_s.arg(id).arg(timeoutMs);
    return found;
}

bool SwayIpc::setOutputScale(const QString& name, double scale, int timeoutMs)
{
    const std::optional<Output> before = output(name);
    if (!before)
        return false;
    if (!m_originalScales.contains(name))
        m_originalScales.insert(name, before->scale);
    if (!command(u"output %1 scale %2"_s.arg(name).arg(scale)))
        return false;
    const bool applied = QTest::qWaitFor(
        [&] {
            const std::optional<Output> now = output(name);
            return now && std::abs(now->scale - scale) < 1e-6;
        },
        timeoutMs);
    if (!applied)
        m_error = u"%1 did not take scale %2 within %3 ms"_s.arg(name).arg(scale).arg(timeoutMs);
    return applied;
}

bool SwayIpc::restoreOutputScales(int timeoutMs)
{
    bool ok = true;
    for (auto it = m_originalScales.cbegin(); it != m_originalScales.cend(); ++it)
        ok = setOutputScale(it.key(), it.value(), timeoutMs) && ok;
    m_originalScales.clear();
    return ok;
}

bool SwayIpc::parkPointer(QPoint point)
{
    return command(u"seat - cursor set %1 %2"_s.arg(point.x()).arg(point.y()));
}
