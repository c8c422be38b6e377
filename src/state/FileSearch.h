#pragma once

#include "Prompt.h"

#include <QList>
#include <QString>

// The library's search read straight from the files, for a process that
// searches once (the command line): the same prompts in the same order as
// loading the library and searching it, but a file is parsed only when its
// raw text could hold the query.
namespace FileSearch {

QList<Prompt> search(const QString &root, const QString &query);

} // namespace FileSearch
