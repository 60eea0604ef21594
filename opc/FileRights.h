// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <string>

namespace opc {

/// Makes the new open file `to`, which nobody else can open yet, a substitute for the file at
/// `path`, whose status is `old`: gives it owner and group, mode, access control list and the
/// attributes `user.*`. If the process may not give it owner or group, the rights are cut so that
/// nobody gets one that the old file did not grant. A list that `to` inherited from its folder is
/// removed. Throws SystemError.
void copyRights(const std::string& path, const struct stat& old, int to);

/// The same for a file beside it that only those can open, and only for writing, who may write to
/// the file at `path`. Attributes are not copied.
void copyRightsToWrite(const std::string& path, const struct stat& old, int to);

}  // namespace opc
