#include "AppIdentity.h"
#include "ui/shell/VeskApplication.h"

#include <QGuiApplication>
#include <QSettings>
#include <QTest>

// The one identifier names the settings' home, the desktop file and the
// Wayland app id. No setting is written here.
class TestAppIdentity : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void settingsLiveUnderTheIdentifier();
};

void TestAppIdentity::settingsLiveUnderTheIdentifier()
{
    VeskApplication::applyIdentity();
    QCOMPARE(QGuiApplication::desktopFileName(), AppIdentity::appId);
    QCOMPARE(QCoreApplication::applicationName(), u"Vesk");

    const QSettings settings;
    QCOMPARE(settings.format(), QSettings::NativeFormat);
#ifdef Q_OS_MACOS
    // The bundle identifier's user defaults, where `defaults read io.vesk.Vesk`
    // finds them (Qt rewrites domains it does not recognise into another name).
    QVERIFY2(settings.fileName().endsWith(u"/Library/Preferences/" + AppIdentity::appId + u".plist"),
             qPrintable(settings.fileName()));
#else
    QVERIFY2(settings.fileName().endsWith(u"/Vesk/Vesk.conf"), qPrintable(settings.fileName()));
#endif
}

QTEST_MAIN(TestAppIdentity)
#include "tst_appidentity.moc"
