// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/SqliteLibrary.h"

#include <dlfcn.h>

#include "opc/Exception.h"

namespace addon::catalogue::detail {
namespace {

constexpr const char* kLibrary = "libsqlite3.so.0";

opc::Exception loadingError() {
  const char* error = ::dlerror();
  return {opc::ErrorCode::Unsupported,
          opc::sentence("cannot load the library for databases", kLibrary,
                        error == nullptr ? "the loader gives no reason" : error)};
}

template <typename Function>
void find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(library, name));
  if (function == nullptr) throw loadingError();
}

SqliteLibrary load() {
  void* library = ::dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw loadingError();
  SqliteLibrary all{};
  find(library, "sqlite3_bind_int64", all.bindInt64);
  find(library, "sqlite3_bind_null", all.bindNull);
  find(library, "sqlite3_bind_text64", all.bindText64);
  find(library, "sqlite3_close", all.close);
  find(library, "sqlite3_column_bytes", all.columnBytes);
  find(library, "sqlite3_column_int64", all.columnInt64);
  find(library, "sqlite3_column_text", all.columnText);
  find(library, "sqlite3_db_config", all.dbConfig);
  find(library, "sqlite3_errcode", all.errcode);
  find(library, "sqlite3_errmsg", all.errmsg);
  find(library, "sqlite3_exec", all.exec);
  find(library, "sqlite3_finalize", all.finalize);
  find(library, "sqlite3_open_v2", all.open);
  find(library, "sqlite3_prepare_v2", all.prepare);
  find(library, "sqlite3_reset", all.reset);
  find(library, "sqlite3_step", all.step);
  return all;
}

}  // namespace

const SqliteLibrary& sqlite() {
  static const SqliteLibrary library = load();
  return library;
}

}  // namespace addon::catalogue::detail
