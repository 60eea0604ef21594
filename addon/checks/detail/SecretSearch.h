// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
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
/// `folder` is the name of the folder that it is in.
SecretFile secretFileOf(std::string_view name, std::string_view folder);

/// Finds keys and tokens in texts of UTF-8, UTF-16 or another encoding that contains ASCII. Other
/// files have none. Takes a fixed amount of memory, of which the most part serves all files.
class SecretSearch {
 public:
  /// The first 100 in a file. Throws as the stream does.
  std::vector<Secret> find(opc::InputStream& stream, SecretFile kind);

 private:
  std::string block_;
  std::string text_;
};

/// Whether SecretSearch::find() finds nothing in a file with this content, whatever its name, if
/// its kind is not Settings. It may also return false if nothing is found.
bool hasNoSecrets(std::span<const unsigned char> content);

}  // namespace addon::checks::detail
