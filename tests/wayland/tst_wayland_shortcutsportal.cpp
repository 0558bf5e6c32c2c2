#include "PortalShortcut.h"
#include "PrivatePortal.h"
#include "ShortcutsPortalControl.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDateTime>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QTest>
#include <QUrl>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString desktopPath = u"/org/freedesktop/portal/desktop"_s;
const QString shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;

// The shortcuts a program asks for: "record" is the one the desktop leaves without a key.
const PortalShortcuts asked {
    { u"screen"_s,
        { { u"description"_s, u"Ekranı yakala"_s }, { u"preferred_trigger"_s, u"ALT+SHIFT+LOGO+3"_s } } },
    { u"record"_s, { { u"description"_s, u"Kaydı başlat"_s }, { u"preferred_trigger"_s, u"CTRL+alt+r"_s } } },
};

QString pathOf(const QVariant& value)
{
    return value.metaType() == QMetaType::fromType<QDBusObjectPath>() ? value.value<QDBusObjectPath>().path()
                                                                      : value.toString();
}

// id → trigger_description of a shortcut list from the portal.
QMap<QString, QString> triggers(const PortalShortcuts& shortcuts)
{
    QMap<QString, QString> map;
    for (const PortalShortcut& shortcut : shortcuts)
        map.insert(shortcut.id, shortcut.properties.value(u"trigger_description"_s).toString());
    return map;
}

QStringList ids(const QJsonArray& shortcuts, const QString& key)
{
    QStringList values;
    for (const QJsonValue& shortcut : shortcuts)
        values.append(shortcut[u"id"_s].toString() + u'=' + shortcut[key].toString());
    return values;
}

} // namespace

// The GlobalShortcuts portal of the Wayland test desktop, seen by a program: the real
// xdg-desktop-portal frontend with the test backend behind it (vexet-test-portal shortcuts), on a
// private bus that also has sway's own portal backends and a tray.
class TestWaylandShortcutsPortal : public QObject {
    Q_OBJECT

    struct Answer {
        uint code = 2;
        QVariantMap results;
    };

    std::unique_ptr<PrivatePortal> m_portal;
    std::unique_ptr<ShortcutsPortalControl> m_control;
    QDBusConnection m_bus { QString() };
    std::optional<Answer> m_answer;
    QList<QDBusMessage> m_signals; // Activated, Deactivated and ShortcutsChanged, as they came
    int m_tokens = 0;

    QString sender() const { return m_bus.baseService().mid(1).replace(u'.', u'_'); }

    // A portal call that answers through a Request: listens on the request's path (made of our bus
    // name and a fresh handle_token) before asking, then waits for its Response.
    std::optional<Answer> ask(
        const QString& interface, const QString& method, QVariantList arguments, QVariantMap options)
    {
        const QString token = u"vexet_shortcuts_%1"_s.arg(++m_tokens);
        const QString requestPath = u"%1/request/%2/%3"_s.arg(desktopPath, sender(), token);
        const char* slot = SLOT(response(uint, QVariantMap));
        if (!m_bus.connect(
                portalService, requestPath, u"org.freedesktop.portal.Request"_s, u"Response"_s, this, slot))
            return std::nullopt;
        options.insert(u"handle_token"_s, token);
        arguments.append(options);
        QDBusMessage call = QDBusMessage::createMethodCall(portalService, desktopPath, interface, method);
        call.setArguments(arguments);
        m_answer.reset();
        const QDBusMessage reply = m_bus.call(call, QDBus::Block, 20000);
        const bool answered = reply.type() == QDBusMessage::ReplyMessage
            && pathOf(reply.arguments().value(0)) == requestPath
            && QTest::qWaitFor([this] { return m_answer.has_value(); }, 20000);
        if (reply.type() != QDBusMessage::ReplyMessage)
            qWarning("%s: %s", qPrintable(method), qPrintable(reply.errorMessage()));
        m_bus.disconnect(
            portalService, requestPath, u"org.freedesktop.portal.Request"_s, u"Response"_s, this, slot);
        return answered ? m_answer : std::nullopt;
    }

    // A new session, the program's shortcuts also handed to CreateSession.
    std::optional<Answer> askForSession(const QString& token)
    {
        return ask(shortcutsInterface, u"CreateSession"_s, {},
            { { u"session_handle_token"_s, token }, { u"shortcuts"_s, QVariant::fromValue(asked) } });
    }

    // The handle of a new session, "" if the portal refused.
    QString createSession(const QString& token)
    {
        const std::optional<Answer> answer = askForSession(token);
        if (!answer || answer->code != 0)
            return {};
        return pathOf(answer->results.value(u"session_handle"_s));
    }

    std::optional<PortalShortcuts> bind(const QString& session, const PortalShortcuts& shortcuts)
    {
        const std::optional<Answer> answer = ask(shortcutsInterface, u"BindShortcuts"_s,
            { QVariant::fromValue(QDBusObjectPath(session)), QVariant::fromValue(shortcuts),
                u"wayland:vexet"_s },
            {});
        if (!answer || answer->code != 0)
            return std::nullopt;
        return PortalShortcut::listFrom(answer->results.value(u"shortcuts"_s));
    }

    std::optional<PortalShortcuts> list(const QString& session)
    {
        const std::optional<Answer> answer = ask(
            shortcutsInterface, u"ListShortcuts"_s, { QVariant::fromValue(QDBusObjectPath(session)) }, {});
        if (!answer || answer->code != 0)
            return std::nullopt;
        return PortalShortcut::listFrom(answer->results.value(u"shortcuts"_s));
    }

    QList<QDBusMessage> signalsNamed(const QString& name) const
    {
        QList<QDBusMessage> found;
        for (const QDBusMessage& message : m_signals) {
            if (message.member() == name)
                found.append(message);
        }
        return found;
    }

    void stopPortal()
    {
        QDBusConnection::disconnectFromBus(u"vexet-shortcuts-client"_s);
        m_bus = QDBusConnection(QString());
        m_control.reset();
        m_portal.reset();
    }

    // A (new) private portal, and this program on its bus, listening to the shortcuts' signals.
    bool startPortal(const PrivatePortal::Shortcuts& shortcuts)
    {
        stopPortal();
        m_portal = std::make_unique<PrivatePortal>(shortcuts);
        if (!m_portal->isReady()) {
            qWarning("%s", qPrintable(m_portal->errorString()));
            return false;
        }
        m_control = std::make_unique<ShortcutsPortalControl>(m_portal->connection());
        m_bus = QDBusConnection::connectToBus(m_portal->busAddress(), u"vexet-shortcuts-client"_s);
        for (const QString& name : { u"Activated"_s, u"Deactivated"_s, u"ShortcutsChanged"_s }) {
            if (!m_bus.connect(portalService, desktopPath, shortcutsInterface, name, this,
                    SLOT(shortcutSignal(QDBusMessage))))
                return false;
        }
        return true;
    }

public Q_SLOTS:
    void response(uint code, const QVariantMap& results) { m_answer = Answer { code, results }; }
    void shortcutSignal(const QDBusMessage& message) { m_signals.append(message); }

private Q_SLOTS:
    void initTestCase()
    {
        PortalShortcut::registerTypes();
        QVERIFY(startPortal({ { u"record"_s } }));
    }

    void cleanupTestCase() { stopPortal(); }

    void init() { m_signals.clear(); }

    void theFrontendHandsCreateSessionsOptionsOn()
    {
        const std::optional<Answer> answer = askForSession(u"created"_s);
        QVERIFY(answer);
        QCOMPARE(answer->code, 0u);
        const QString session = pathOf(answer->results.value(u"session_handle"_s));
        QCOMPARE(session, u"%1/session/%2/created"_s.arg(desktopPath, sender()));
        // Binding is BindShortcuts' job here: the session starts without shortcuts.
        QVERIFY(answer->results.contains(u"shortcuts"_s));
        QVERIFY(PortalShortcut::listFrom(answer->results.value(u"shortcuts"_s)).isEmpty());
        const std::optional<PortalShortcuts> listed = list(session);
        QVERIFY(listed);
        QVERIFY(listed->isEmpty());
        const std::optional<QJsonObject> received = m_control->received();
        QVERIFY2(received, qPrintable(m_control->errorString()));
        // xdg-desktop-portal 1.16 passes every option on, the shortcuts too.
        QStringList options = received->value(u"createOptions"_s).toVariant().toStringList();
        options.sort();
        QCOMPARE(options, (QStringList { u"handle_token"_s, u"session_handle_token"_s, u"shortcuts"_s }));
        const QJsonArray shortcuts = received->value(u"createShortcuts"_s).toArray();
        QCOMPARE(ids(shortcuts, u"preferredTrigger"_s),
            (QStringList { u"screen=ALT+SHIFT+LOGO+3"_s, u"record=CTRL+alt+r"_s }));
        QCOMPARE(ids(shortcuts, u"description"_s),
            (QStringList { u"screen=Ekranı yakala"_s, u"record=Kaydı başlat"_s }));
        QCOMPARE(received->value(u"appId"_s).toString(), QString());
    }

    void bindingGivesThePreferredKeysExceptTakenOnes()
    {
        const QString session = createSession(u"bound"_s);
        QVERIFY(!session.isEmpty());
        const std::optional<PortalShortcuts> bound = bind(session, asked);
        QVERIFY(bound);
        const QMap<QString, QString> expected { { u"screen"_s, u"Alt+Shift+Meta+3"_s },
            { u"record"_s, QString() } };
        QCOMPARE(triggers(*bound), expected);
        QCOMPARE(bound->value(0).properties.value(u"description"_s).toString(), u"Ekranı yakala"_s);
        const std::optional<PortalShortcuts> listed = list(session);
        QVERIFY(listed);
        QCOMPARE(triggers(*listed), expected);

        const std::optional<QJsonObject> received = m_control->received();
        QVERIFY2(received, qPrintable(m_control->errorString()));
        const QJsonArray shortcuts = received->value(u"bound"_s).toArray();
        QCOMPARE(ids(shortcuts, u"preferredTrigger"_s),
            (QStringList { u"screen=ALT+SHIFT+LOGO+3"_s, u"record=CTRL+alt+r"_s }));
        QCOMPARE(ids(shortcuts, u"description"_s),
            (QStringList { u"screen=Ekranı yakala"_s, u"record=Kaydı başlat"_s }));
        QCOMPARE(received->value(u"parentWindow"_s).toString(), u"wayland:vexet"_s);
    }

    void aPressReachesTheSessionThatBoundIt()
    {
        const QString session = createSession(u"pressed"_s);
        QVERIFY(bind(session, asked));
        const auto before = qulonglong(QDateTime::currentMSecsSinceEpoch());
        QVERIFY2(m_control->activate(u"screen"_s), qPrintable(m_control->errorString()));
        QVERIFY(QTest::qWaitFor([this] { return !signalsNamed(u"Deactivated"_s).isEmpty(); }, 10000));
        QCOMPARE(m_signals.size(), 2);
        for (const QDBusMessage& message : m_signals) {
            QCOMPARE(pathOf(message.arguments().value(0)), session);
            QCOMPARE(message.arguments().value(1).toString(), u"screen"_s);
            const qulonglong timestamp = message.arguments().value(2).toULongLong();
            QVERIFY(timestamp >= before && timestamp <= qulonglong(QDateTime::currentMSecsSinceEpoch()));
        }
        QCOMPARE(m_signals[0].member(), u"Activated"_s);
        QVERIFY(!m_control->activate(u"unknown"_s));
    }

    void aNewKeyReachesTheProgram()
    {
        const QString session = createSession(u"changed"_s);
        QVERIFY(bind(session, asked));
        QVERIFY2(m_control->setTrigger(u"record"_s, u"Ctrl+Alt+R"_s), qPrintable(m_control->errorString()));
        QVERIFY(QTest::qWaitFor([this] { return !m_signals.isEmpty(); }, 10000));
        QCOMPARE(m_signals.size(), 1);
        QCOMPARE(m_signals[0].member(), u"ShortcutsChanged"_s);
        QCOMPARE(pathOf(m_signals[0].arguments().value(0)), session);
        const QMap<QString, QString> expected { { u"screen"_s, u"Alt+Shift+Meta+3"_s },
            { u"record"_s, u"Ctrl+Alt+R"_s } };
        QCOMPARE(triggers(qdbus_cast<PortalShortcuts>(m_signals[0].arguments().value(1))), expected);
        const std::optional<PortalShortcuts> listed = list(session);
        QVERIFY(listed);
        QCOMPARE(triggers(*listed), expected);
    }

    void closingTheSessionEndsItAtTheDesktop()
    {
        const QString session = createSession(u"closed"_s);
        QVERIFY(bind(session, { { u"closing"_s, { { u"description"_s, u"Kapanış"_s } } } }));
        const std::optional<QJsonObject> before = m_control->received();
        QVERIFY2(before, qPrintable(m_control->errorString()));
        QVERIFY(m_control->activate(u"closing"_s));
        const QDBusMessage reply = m_bus.call(QDBusMessage::createMethodCall(
            portalService, session, u"org.freedesktop.portal.Session"_s, u"Close"_s));
        QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
        std::optional<QJsonObject> after;
        QVERIFY(QTest::qWaitFor(
            [&] {
                after = m_control->received();
                return after
                    && after->value(u"closedSessions"_s).toInt() > before->value(u"closedSessions"_s).toInt();
            },
            10000));
        QCOMPARE(after->value(u"closedSessions"_s).toInt(), before->value(u"closedSessions"_s).toInt() + 1);
        QCOMPARE(after->value(u"openSessions"_s).toInt(), before->value(u"openSessions"_s).toInt() - 1);
        QVERIFY(!m_control->activate(u"closing"_s));
    }

    void screenshotsAreTheCompositorsPictures()
    {
        const std::optional<Answer> answer = ask(u"org.freedesktop.portal.Screenshot"_s, u"Screenshot"_s,
            { QString() }, { { u"interactive"_s, false } });
        QVERIFY(answer);
        QCOMPARE(answer->code, 0u);
        const QUrl uri(answer->results.value(u"uri"_s).toString());
        QVERIFY2(uri.isLocalFile(), qPrintable(uri.toString()));
        const QImage picture(uri.toLocalFile());
        QFile::remove(uri.toLocalFile());
        QVERIFY2(!picture.isNull(), qPrintable(uri.toLocalFile()));
        // Both outputs side by side: 1920x1080 and 1280x1024.
        QCOMPARE(picture.size(), QSize(3200, 1080));
    }

    void theBusHasATray()
    {
        QDBusMessage get = QDBusMessage::createMethodCall(u"org.kde.StatusNotifierWatcher"_s,
            u"/StatusNotifierWatcher"_s, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
        get << u"org.kde.StatusNotifierWatcher"_s << u"IsStatusNotifierHostRegistered"_s;
        const QDBusMessage reply = m_bus.call(get);
        QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
        QCOMPARE(reply.arguments().value(0).value<QDBusVariant>().variant(), QVariant(true));
    }

    void aDesktopMayBindAlreadyWhenTheSessionStarts()
    {
        QVERIFY(startPortal({ { u"record"_s }, true }));
        const std::optional<Answer> answer = askForSession(u"plasma"_s);
        QVERIFY(answer);
        QCOMPARE(answer->code, 0u);
        const QString session = pathOf(answer->results.value(u"session_handle"_s));
        const QMap<QString, QString> expected { { u"screen"_s, u"Alt+Shift+Meta+3"_s },
            { u"record"_s, QString() } };
        QCOMPARE(triggers(PortalShortcut::listFrom(answer->results.value(u"shortcuts"_s))), expected);
        const std::optional<PortalShortcuts> listed = list(session);
        QVERIFY(listed);
        QCOMPARE(triggers(*listed), expected);
        QVERIFY2(m_control->activate(u"screen"_s), qPrintable(m_control->errorString()));
        QVERIFY(QTest::qWaitFor([this] { return !signalsNamed(u"Activated"_s).isEmpty(); }, 10000));
        QCOMPARE(pathOf(m_signals[0].arguments().value(0)), session);
        const std::optional<QJsonObject> received = m_control->received();
        QVERIFY2(received, qPrintable(m_control->errorString()));
        QCOMPARE(received->value(u"bindCalls"_s).toInt(), 0);
    }
};

QTEST_GUILESS_MAIN(TestWaylandShortcutsPortal)
#include "tst_wayland_shortcutsportal.moc"
