#pragma once

#include "Alerts.h"

#include <QList>

// Answers alerts from a script and keeps every alert it was shown. With the
// script used up, an alert is answered as closed without a choice.
class ScriptedAlerts : public Alerts
{
public:
    QList<Alert> shown;
    QList<AlertAnswer> script;

    AlertAnswer run(const Alert &alert) override
    {
        shown.append(alert);
        return script.isEmpty() ? AlertAnswer{} : script.takeFirst();
    }
};
