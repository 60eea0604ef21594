// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "addon/catalogue/detail/SqliteLibrary.h"
#include "opc/Exception.h"

namespace addon::catalogue::detail {

/// A database that cannot be used. Its code is ErrorCode::Damaged if the file is not a sound
/// database of the expected tables.
class DatabaseError : public opc::Exception {
 public:
  /// What SQLite refuses.
  DatabaseError(sqlite3* connection, const std::string& path);
  /// A value that is damaged, although SQLite can read it.
  DatabaseError(const std::string& path, std::string_view why);
};

/// A prepared statement; columns and parameters count from 0. Throws DatabaseError.
class Statement {
 public:
  Statement(sqlite3* connection, const std::string& path, std::string_view sql);

  Statement& bind(int parameter, std::string_view text);
  Statement& bind(int parameter, std::int64_t number);
  Statement& bindNull(int parameter);

  /// Whether there is another row.
  bool step();
  /// Runs it to its end, and makes it ready to run again.
  void run();
  void reset();

  std::string text(int column) const;
  std::int64_t number(int column) const;

  /// Of the database.
  const std::string& path() const { return path_; }

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite().finalize(statement); }
  };

  void check(int result) const;

  sqlite3* connection_;
  const std::string& path_;
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

/// An open database. Throws DatabaseError that names the file.
class Connection {
 public:
  enum class Mode {
    Read,  ///< a file that does not change
    Build  ///< a new file, or one without other users
  };

  Connection(const std::string& path, Mode mode);

  Statement prepare(std::string_view sql) const { return {connection_.get(), path_, sql}; }
  void run(const char* sql) const;

 private:
  struct Close {
    void operator()(sqlite3* connection) const { sqlite().close(connection); }
  };

  /// A file that is not complete is thrown away, and a journal would stay if the process is killed.
  void turnJournalOff() const;

  std::string path_;
  std::unique_ptr<sqlite3, Close> connection_;
};

}  // namespace addon::catalogue::detail
