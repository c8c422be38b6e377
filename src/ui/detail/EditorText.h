#pragma once

#include <QList>
#include <QString>

class QTextDocument;

// The body editor holds every line break as one plain line feed, whatever
// the file had (CR LF, a lone CR, a Unicode separator). These functions
// carry edits between that form and the body, so that a body is written
// back with the line ends it had and only the text the user changed is new.
namespace EditorText {

// `body` as the editor shows it.
QString fromBody(const QString &body);

// The editor's text, in the same form as fromBody().
QString fromDocument(const QTextDocument *document);

// The body after an edit: `body` showed as `before` and the editor now
// holds `after`. What lies outside the changed stretch keeps its own
// characters; line breaks inside it take the body's usual line end.
QString toBody(const QString &body, const QString &before, const QString &after);

// Where a cursor at `position` in `before` lands in `after`, kept beside the
// text it followed: `after` may wrap `before` in quotes or escapes, or be
// another program's change of it.
int mapCursor(const QString &before, const QString &after, int position);

// The stretch in which two texts differ: they share `start` characters at
// the front and everything after `start + removed` (of `before`) and
// `start + inserted` (of `after`) at the back.
struct Change
{
    int start = 0;
    int removed = 0;
    int inserted = 0;
};
Change difference(const QString &before, const QString &after);

// The changes that turn `before` into `after`, line by line and each cut
// down to the characters that differ, in order; unchanged lines between
// them are left out, so cursors there keep their place.
QList<Change> lineChanges(const QString &before, const QString &after);

} // namespace EditorText
