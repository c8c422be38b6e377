#include "RenameNoReplace.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

int renameNoReplaceNative(const char *from, const char *to)
{
    // glibc 2.28+ wraps the renameat2 system call (Linux 3.15+).
    return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0 ? 0 : errno;
}
