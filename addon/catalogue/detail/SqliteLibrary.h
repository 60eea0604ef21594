// SPDX-License-Identifier: MIT
#pragma once

#include <sqlite3.h>

namespace addon::catalogue::detail {

/// What is used of SQLite. Its shared library is loaded when it is first needed: it would take a
/// tenth of the start of every command.
struct SqliteLibrary {
  decltype(&::sqlite3_bind_int64) bindInt64;
  decltype(&::sqlite3_bind_null) bindNull;
  decltype(&::sqlite3_bind_text64) bindText64;
  decltype(&::sqlite3_close) close;
  decltype(&::sqlite3_column_bytes) columnBytes;
  decltype(&::sqlite3_column_int64) columnInt64;
  decltype(&::sqlite3_column_text) columnText;
  decltype(&::sqlite3_db_config) dbConfig;
  decltype(&::sqlite3_errcode) errcode;
  decltype(&::sqlite3_errmsg) errmsg;
  decltype(&::sqlite3_exec) exec;
  decltype(&::sqlite3_finalize) finalize;
  decltype(&::sqlite3_open_v2) open;
  decltype(&::sqlite3_prepare_v2) prepare;
  decltype(&::sqlite3_reset) reset;
  decltype(&::sqlite3_step) step;
};

/// Throws opc::Exception, with ErrorCode::Unsupported, if the library is not installed.
const SqliteLibrary& sqlite();

}  // namespace addon::catalogue::detail
