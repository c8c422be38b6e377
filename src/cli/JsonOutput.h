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

// The compact JSON text of promptObject(prompt), byte for byte, written
// straight from the prompt: listing a large library spends its time on the
// files, not on building and serialising a document per prompt.
void appendPrompt(QByteArray *out, const Prompt &prompt);

} // namespace JsonOutput
