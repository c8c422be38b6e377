#pragma once

#include <QString>

// Small file-system primitives that report the system's own error text.
namespace FileOps {

// UTF-8, through a temporary file that then replaces the target.
bool writeTextAtomically(const QString &path, const QString &text, QString *error);

// True when anything is at `path`, a dangling symbolic link included.
bool entryExists(const QString &path);

bool makeDirectory(const QString &path, QString *error);
bool renameEntry(const QString &from, const QString &to, QString *error);

} // namespace FileOps
