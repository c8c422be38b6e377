#include "Preferences.h"

#include <QSettings>

QString Preferences::appearance() const
{
    return QSettings().value(appearanceKey, QStringLiteral("system")).toString();
}

void Preferences::setAppearance(const QString &value)
{
    if (value == appearance())
        return;
    QSettings().setValue(appearanceKey, value);
    Q_EMIT appearanceChanged();
}

QString Preferences::handoffApp() const
{
    return QSettings().value(handoffAppKey, QStringLiteral("claude")).toString();
}

void Preferences::setHandoffApp(const QString &value)
{
    if (value == handoffApp())
        return;
    QSettings().setValue(handoffAppKey, value);
    Q_EMIT handoffAppChanged();
}

bool Preferences::autoPaste() const
{
    return QSettings().value(autoPasteKey, false).toBool();
}

void Preferences::setAutoPaste(bool value)
{
    if (value == autoPaste())
        return;
    QSettings().setValue(autoPasteKey, value);
    Q_EMIT autoPasteChanged();
}

SystemAppearance::Scheme schemeForAppearance(const QString &appearance, bool systemIsDark)
{
    using Scheme = SystemAppearance::Scheme;
    if (appearance == u"light")
        return Scheme::Light;
    if (appearance == u"dark")
        return Scheme::Dark;
    if (appearance == u"opposite")
        return systemIsDark ? Scheme::Light : Scheme::Dark;
    return Scheme::System;
}
