// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <string>

namespace opc {

/// Gives the new open file `to` the owner, group, mode, POSIX access control list and `user.*`
/// attributes of the file at `path`, whose status is `old`. No other process may be able to open
/// `to` yet. If the process may not change the owner or the group, the permissions are reduced so
/// that nobody gains access that the old file did not grant. An access control list that `to`
/// inherited from its folder is removed. Throws SystemError.
void copyPermissions(const std::string& path, const struct stat& old, int to);

/// The same for a file beside the one at `path`, with write permissions only and without
/// attributes: only users who may write to the file at `path` can open `to`, and only for writing.
void copyWritePermissions(const std::string& path, const struct stat& old, int to);

}  // namespace opc
