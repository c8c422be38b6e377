#pragma once

#include "platform/SystemAppearance.h"

#include <QObject>
#include <QString>

// The three user preferences, in the platform's preferences store under
// their fixed keys; every reader gets the same defaults.
class Preferences : public QObject
{
    Q_OBJECT

public:
    static constexpr QStringView appearanceKey = u"appearance";
    static constexpr QStringView handoffAppKey = u"handoffApp";
    static constexpr QStringView autoPasteKey = u"autoPaste";

    using QObject::QObject;

    QString appearance() const;          // "system" by default
    void setAppearance(const QString &value);
    QString handoffApp() const;          // "claude" by default
    void setHandoffApp(const QString &value);
    bool autoPaste() const;              // false by default
    void setAutoPaste(bool value);

Q_SIGNALS:
    void appearanceChanged();
    void handoffAppChanged();
    void autoPasteChanged();
};

// What an appearance preference asks for: "light", "dark", "opposite" (the
// scheme the desktop is not using), anything else follows the desktop.
SystemAppearance::Scheme schemeForAppearance(const QString &appearance, bool systemIsDark);
