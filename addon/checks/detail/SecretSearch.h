// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "opc/Streams.h"

namespace addon::checks::detail {

/// A key or token in a text.
struct Secret {
  std::string_view name;  ///< "a GitHub token"
  std::size_t line;       ///< from 1
};

/// What the name of a file says about it.
enum class SecretFile : std::uint8_t {
  No,
  Yes,       ///< it is for passwords and keys
  Settings,  ///< it may have a password: '.npmrc'
  Key,       ///< it has a key or a certificate: 'server.pem'
};
SecretFile secretFileOf(std::string_view path);

/// The keys and tokens in a text of UTF-8, UTF-16 or another encoding that contains ASCII; the
/// first 100. Other files have none. Takes a fixed amount of memory. `kind` is that of the file.
/// Throws as the stream does.
std::vector<Secret> findSecrets(opc::InputStream& stream, SecretFile kind);

}  // namespace addon::checks::detail
