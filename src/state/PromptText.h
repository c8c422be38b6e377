#pragma once

#include <QString>

struct Prompt;

// Texts derived from a prompt for lists.
namespace PromptText {

// The body on one line (each "\n" a space), trimmed, cut to `limit`
// characters plus "…" when longer. Characters are user-perceived ones, so an
// emoji or a CR LF pair is never split.
QString preview(const QString &body, int limit);

// A title on one line: each line break (a CR LF pair, a line feed, a
// carriage return, the Unicode line and paragraph separators…) one space.
// A header line that held one would break the file.
QString oneLine(const QString &text);

// What a screen reader says for a prompt's row: which prompt, what it says
// and where it lives ("Title, preview…, in Project").
QString spoken(const Prompt &prompt);

// "1 variable", "2 variables"; "1 result", "3 results".
QString counted(qsizetype count, const QString &noun);

} // namespace PromptText
