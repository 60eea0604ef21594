// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Sqlite.h"

#include <sys/stat.h>

#include <new>

namespace addon::catalogue::detail {

namespace {

constexpr std::string_view kCannotUse = "cannot use database";

opc::ErrorCode codeOf(sqlite3* connection) {
  switch (sqlite().errcode(connection)) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR:  // a table is missing
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
      return opc::ErrorCode::Damaged;
    default:
      return opc::ErrorCode::FileSystem;
  }
}

/// A path as SQLite takes it in a URI: every byte that could mean something is escaped.
std::string toUri(const std::string& path, std::string_view parameters) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '%' || c == '?' || c == '#') {
      uri += '%';
      uri += kDigits[byte >> 4u];
      uri += kDigits[byte & 15u];
    } else {
      uri += c;
    }
  }
  uri += parameters;
  return uri;
}

/// SQLite would wait for the other end of a pipe.
void refuseOther(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    throw DatabaseError(path, "it is not a file");
  }
}

}  // namespace

DatabaseError::DatabaseError(sqlite3* connection, const std::string& path)
    : Exception(codeOf(connection), opc::sentence(kCannotUse, path, sqlite().errmsg(connection))) {
  if (sqlite().errcode(connection) == SQLITE_NOMEM) throw std::bad_alloc();
}

DatabaseError::DatabaseError(const std::string& path, std::string_view why)
    : Exception(opc::ErrorCode::Damaged, opc::sentence(kCannotUse, path, why)) {}

Statement::Statement(sqlite3* connection, const std::string& path, std::string_view sql)
    : connection_(connection), path_(path) {
  sqlite3_stmt* statement = nullptr;
  check(
      sqlite().prepare(connection, sql.data(), static_cast<int>(sql.size()), &statement, nullptr));
  statement_.reset(statement);
}

void Statement::check(int result) const {
  if (result != SQLITE_OK) throw DatabaseError(connection_, path_);
}

Statement& Statement::bind(int parameter, std::string_view text) {
  check(sqlite().bindText64(statement_.get(), parameter + 1, text.data(), text.size(),
                            SQLITE_TRANSIENT, SQLITE_UTF8));
  return *this;
}

Statement& Statement::bind(int parameter, std::int64_t number) {
  check(sqlite().bindInt64(statement_.get(), parameter + 1, number));
  return *this;
}

Statement& Statement::bindNull(int parameter) {
  check(sqlite().bindNull(statement_.get(), parameter + 1));
  return *this;
}

bool Statement::step() {
  const int result = sqlite().step(statement_.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) throw DatabaseError(connection_, path_);
  return result == SQLITE_ROW;
}

void Statement::run() {
  while (step()) continue;
  reset();
}

void Statement::reset() {
  check(sqlite().reset(statement_.get()));
}

std::string Statement::text(int column) const {
  const unsigned char* text = sqlite().columnText(statement_.get(), column);
  if (text == nullptr) return {};
  const int size = sqlite().columnBytes(statement_.get(), column);
  return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)};
}

std::int64_t Statement::number(int column) const {
  return sqlite().columnInt64(statement_.get(), column);
}

Connection::Connection(const std::string& path, Mode mode) : path_(path) {
  refuseOther(path);
  // Nothing is locked: files are replaced whole, and only we know those that are being made.
  const bool isRead = mode == Mode::Read;
  const std::string uri = toUri(path, isRead ? "?immutable=1" : "?nolock=1");
  const int flags = SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX |
                    (isRead ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  sqlite3* connection = nullptr;
  const int result = sqlite().open(uri.c_str(), &connection, flags, nullptr);
  connection_.reset(connection);
  if (connection == nullptr) throw std::bad_alloc();
  if (result != SQLITE_OK) throw DatabaseError(connection, path_);
  // Before it is defensive, which keeps the journal.
  if (!isRead) turnJournalOff();
  sqlite().dbConfig(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite().dbConfig(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  // Nothing is sorted in files elsewhere.
  run("PRAGMA temp_store = MEMORY; PRAGMA cache_size = -8192");
  // The caller flushes a file that is complete.
  run(isRead ? "PRAGMA cell_size_check = ON" : "PRAGMA synchronous = OFF");
}

void Connection::turnJournalOff() const {
  Statement set = prepare("PRAGMA journal_mode = OFF");
  if (!set.step() || set.text(0) != "off") throw DatabaseError(path_, "it keeps a journal");
}

void Connection::run(const char* sql) const {
  if (sqlite().exec(connection_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw DatabaseError(connection_.get(), path_);
  }
}

}  // namespace addon::catalogue::detail
