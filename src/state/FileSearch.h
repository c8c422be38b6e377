#pragma once

#include "Prompt.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

// The library's search read straight from the files, for a process that
// searches once (the command line): the same prompts in the same order as
// loading the library and searching it, but a file is parsed only when its
// raw text could hold the query.
namespace FileSearch {

// A prompt found, as much of it as a listing shows; a Reader reads the rest.
struct Match
{
    QString folder;
    QString fileName;
    QString projectName;
    QString id;
    QString displayTitle;
    // The file as it was read, kept when the search was asked to keep it.
    QByteArray bytes;
    qint64 modifiedNs = -1;
};

// The matches in library order; only their keys are kept while searching,
// so memory stays small whatever the library holds.
QList<Match> search(const QString &root, const QString &query);

// Every prompt, in library order, the same way; the matches hold their
// files' bytes while those add up to at most `keepBytes`, so that reading
// them again costs nothing for a library that small.
QList<Match> all(const QString &root, qint64 keepBytes = 0);


// The body of a file that is all ASCII, left in the file's bytes (a
// character is a byte there), so a writer can copy it without decoding.
struct AsciiBody
{
    QByteArray file;
    qsizetype start = -1;
    bool isSet() const { return start >= 0; }
    QByteArrayView view() const { return QByteArrayView(file).sliced(start); }
};

// Reads the files of matches again, each folder opened once for the
// reader's life; load() may run on several threads at once.
class Reader
{
public:
    explicit Reader(const QList<Match> &matches);
    ~Reader();
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    // The whole prompt of a match, read again from its file unless the
    // match kept its bytes (nullopt when it went away or stopped being a
    // prompt meanwhile). With
    // `asciiBody`, a file that is all ASCII comes back with an empty body
    // and the body in *asciiBody instead.
    std::optional<Prompt> load(const Match &match, AsciiBody *asciiBody = nullptr) const;

private:
    QHash<QString, int> m_folders;
};

} // namespace FileSearch
