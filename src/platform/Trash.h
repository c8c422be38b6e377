#pragma once

#include <QString>

// The user's Trash: a recoverable removal that the desktop's Trash view lists
// and can restore from. The platform's Trash answers through current(); tests
// put a recording stand-in there, so that no test run touches the account's
// real Trash (on macOS the Finder's Trash belongs to the account whatever
// HOME says).
class Trash
{
public:
    virtual ~Trash() = default;

    // Moves the file or folder at `path` (not following a final symbolic
    // link) to the Trash. On failure, nothing has been removed and `error`
    // says why.
    virtual bool trashItem(const QString &path, QString *error) = 0;

    // current().trashItem(path, error): what the store calls.
    static bool moveToTrash(const QString &path, QString *error);

    static Trash &current();
    // `replacement` answers from now on; nullptr restores the platform's.
    static void setCurrent(Trash *replacement);

private:
    static Trash &platform();
};
