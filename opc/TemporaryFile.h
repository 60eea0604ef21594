// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "opc/FileDescriptor.h"

namespace opc {

/// A random name for a file in the making that is to become `name`: ".NAME.XXXXXX.tmp" in at most
/// 255 bytes, cut at a character.
std::string temporaryName(std::string_view name);
/// The same with these six letters or digits instead of random ones.
std::string temporaryName(std::string_view name, std::string_view letters);

/// Whether temporaryName makes such names. A killed program may leave files of these names behind.
bool isTemporaryName(std::string_view name) noexcept;

/// Its random letters; empty if temporaryName does not make such names.
std::string_view lettersOfTemporaryName(std::string_view name) noexcept;

/// Creates a file beside the one at `path`, which is relative to the open `folder` unless it is
/// absolute, and sets `path` to its temporary path. `access` is O_WRONLY or O_RDWR. Returns no
/// descriptor, with errno set, on failure.
FileDescriptor createTemporaryFile(int folder, std::string& path, int access, mode_t mode);

}  // namespace opc
