#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

// {{name}} placeholders in a prompt body. Pure functions.
namespace Variables {

// Distinct placeholder names, in order of first appearance.
QStringList extract(const QString &text);

// Replaces every placeholder whose name has a value; others stay as written.
// Inserted values are never scanned again.
QString substitute(const QString &text, const QHash<QString, QString> &values);

} // namespace Variables
