#pragma once

#include <QString>

// Texts derived from a prompt for lists.
namespace PromptText {

// The body on one line (each "\n" a space), trimmed, cut to `limit`
// characters plus "…" when longer. Characters are user-perceived ones, so an
// emoji or a CR LF pair is never split.
QString preview(const QString &body, int limit);

// "1 variable", "2 variables"; "1 result", "3 results".
QString counted(qsizetype count, const QString &noun);

} // namespace PromptText
