// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "opc/Streams.h"

namespace opc::plservices {

/// What part names cannot say about a file tree, as the content of one XML part: empty folders, and
/// files whose path is not a part name. Paths are UTF-8; in the XML they are percent-encoded, since
/// XML has no control characters.
struct FileTreeTable {
  // The names in the XML.
  static constexpr const char16_t* kRoot = u"fileTree";
  static constexpr const char16_t* kFolder = u"folder";
  static constexpr const char16_t* kFile = u"file";
  static constexpr const char16_t* kPath = u"path";
  static constexpr const char16_t* kPart = u"part";
  static std::u16string namespaceURI();

  struct File {
    std::string path;
    std::string partName;  ///< canonical, such as "/metadata/fileTree/1.m"
  };

  /// What a reader accepts: beyond it a path, or the table, must not be written.
  static constexpr std::size_t kMaxEncodedPath = 500'000;
  static constexpr std::uint64_t kMaxSize = 60u << 20;

  std::vector<std::string> folders;  ///< the empty ones
  std::vector<File> files;

  /// Throws Exception for XML that is not a table, and for a path that is not valid in a package.
  static FileTreeTable read(InputStream& stream);
  /// Sorted by path, so that equal trees give equal bytes.
  void write(OutputStream& stream);

  /// Bytes that an entry for `path` takes at most; 0 when the path is too long for a table.
  static std::uint64_t entrySize(std::string_view path);
};

}  // namespace opc::plservices
