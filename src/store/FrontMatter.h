#pragma once

#include "Prompt.h"

#include <QHash>
#include <QString>
#include <QStringList>

// The text format of a prompt file's header. Pure functions; no disk access.
namespace FrontMatter {

struct ParseResult
{
    QHash<QString, QString> matter; // raw key/value pairs, later keys win
    QString body;
};

ParseResult parse(const QString &text);
// The same, reusing `text`'s memory for the body instead of copying it.
ParseResult parse(QString &&text);
QStringList parseList(const QString &value);
QString serialize(const PromptFrontMatter &matter);

// What follows the header when `body` is saved, which is also the body a
// load reads back: the header's blank line comes back as the body's first
// line feed, and a body that already starts with one does not get a second.
QString bodyAfterHeader(QStringView body);

// The typed fields of a parsed header; unknown keys are dropped.
PromptFrontMatter fromMatter(const QHash<QString, QString> &matter);

} // namespace FrontMatter

// Trims only spaces and tabs, as the file formats do (never line breaks).
QStringView trimSpacesAndTabs(QStringView text);
