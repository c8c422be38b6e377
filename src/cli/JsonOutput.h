#pragma once

#include "Prompt.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>

namespace JsonOutput {

QJsonObject promptObject(const Prompt &prompt);
QJsonObject projectObject(const Project &project);
QJsonArray promptArray(const QList<Prompt> &prompts);
QJsonArray stringArray(const QStringList &strings);

// Compact JSON text of one value, followed by a line feed.
QByteArray text(const QJsonValue &value);

} // namespace JsonOutput
