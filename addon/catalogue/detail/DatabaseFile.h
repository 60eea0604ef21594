// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "addon/catalogue/detail/SiteFiles.h"
#include "opc/FileDescriptor.h"

namespace addon::catalogue::detail {

/// Whether the name is that of a journal that SQLite kept beside a database in the making. Earlier
/// versions of the program left them when they were killed.
bool isDatabaseJournal(std::string_view name);

/// The next database of a site in the making. SQLite opens it by a name, which a killed process
/// leaves behind. Functions throw opc::SystemError.
class DatabaseFile {
 public:
  /// Removes what killed processes left. `files` must outlive it.
  explicit DatabaseFile(SiteFiles& files);
  /// Removes the file unless it was put in place.
  ~DatabaseFile();
  DatabaseFile(const DatabaseFile&) = delete;
  DatabaseFile& operator=(const DatabaseFile&) = delete;

  const std::string& path() const { return path_; }

  /// Makes it an empty file.
  opc::FileDescriptor create() const;
  /// Makes it a copy of the site's database. Returns false if that is missing or cannot be read.
  bool copy() const;
  /// The same for a second thread: returns false for any other failure as well.
  bool tryCopy() const noexcept;
  /// Makes it the site's database.
  void putInPlace();

 private:
  std::string what() const;

  SiteFiles& files_;
  std::string name_;
  std::string path_;
};

}  // namespace addon::catalogue::detail
