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

// The same with the body given as its UTF-8 bytes (the prompt's own body
// is not used), for a body taken straight from its file.
void appendPrompt(QByteArray *out, const Prompt &prompt, QByteArrayView utf8Body);

} // namespace JsonOutput
