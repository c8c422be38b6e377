#pragma once

// The system's rename that refuses to replace an existing target, atomically.
// Returns 0, or the errno: EEXIST when the target exists; EINVAL, ENOTSUP or
// ENOSYS when the file system or kernel cannot do it (callers fall back).
int renameNoReplaceNative(const char *from, const char *to);
