#include "RenameNoReplace.h"

#include <cerrno>
#include <stdio.h>

int renameNoReplaceNative(const char *from, const char *to)
{
    // renamex_np (macOS 10.12+) with RENAME_EXCL fails with EEXIST instead of
    // replacing; file systems without support answer ENOTSUP.
    return ::renamex_np(from, to, RENAME_EXCL) == 0 ? 0 : errno;
}
