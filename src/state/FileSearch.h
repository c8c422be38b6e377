#pragma once

#include "Prompt.h"

#include <QList>
#include <QString>

#include <optional>

// The library's search read straight from the files, for a process that
// searches once (the command line): the same prompts in the same order as
// loading the library and searching it, but a file is parsed only when its
// raw text could hold the query.
namespace FileSearch {

// A prompt found, as much of it as a listing shows; load() reads the rest.
struct Match
{
    QString folder;
    QString fileName;
    QString projectName;
    QString id;
    QString displayTitle;
};

// The matches in library order; only their keys are kept while searching,
// so memory stays small whatever the library holds.
QList<Match> search(const QString &root, const QString &query);

// Every prompt, in library order, the same way.
QList<Match> all(const QString &root);

// The whole prompt of a match, read again from its file (nullopt when it
// went away or stopped being a prompt meanwhile).
std::optional<Prompt> load(const Match &match);

} // namespace FileSearch
