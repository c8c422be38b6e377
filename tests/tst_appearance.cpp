#include "AppState.h"
#include "FakeAccessibility.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/Preferences.h"
#include "ui/shell/VeskApplication.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

// The desktop switching between light and dark while Vesk runs, told the
// way the desktop portal tells it. Run on a private session bus.
class TestAppearance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void followsTheDesktopLive();

private:
    void announce(uint colorScheme);
    QTemporaryDir m_dir;
};

void TestAppearance::initTestCase()
{
    if (!QDBusConnection::sessionBus().isConnected())
        QSKIP("no session bus");
    QCoreApplication::setOrganizationName(QStringLiteral("VeskTests"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskAppearanceTests"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_dir.path());
    qunsetenv("GTK_THEME");
}

// What the portal sends when the user picks a scheme: 1 dark, 2 light.
void TestAppearance::announce(uint colorScheme)
{
    QDBusConnection portal = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
    QVERIFY(portal.isConnected());
    QVERIFY(portal.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    QDBusMessage changed = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                      QStringLiteral("org.freedesktop.portal.Settings"),
                                                      QStringLiteral("SettingChanged"));
    changed << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
            << QVariant::fromValue(QDBusVariant(colorScheme));
    QVERIFY(portal.send(changed));
}

void TestAppearance::followsTheDesktopLive()
{
    // The portal is there (it owns its name) before the app starts.
    QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"))
        .registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    FakeAccessibility accessibility;
    VeskApplication app(m_dir.path() + u"/prompts");
    const auto dark = [] { return QApplication::palette().color(QPalette::Window).lightnessF() < 0.5; };
    QVERIFY(!dark());

    announce(1);
    QTRY_VERIFY(dark()); // "system"
    app.preferences()->setAppearance(QStringLiteral("opposite"));
    QVERIFY(!dark());
    announce(2);
    QTRY_VERIFY(dark()); // "opposite" of light
    app.preferences()->setAppearance(QStringLiteral("light"));
    announce(1);
    QTest::qWait(200);
    QVERIFY(!dark()); // a fixed choice stays
}

QTEST_MAIN(TestAppearance)
#include "tst_appearance.moc"
