// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "addon/catalogue/Record.h"
#include "addon/catalogue/detail/Sqlite.h"

namespace addon::catalogue::detail {

/// `catalogue.sqlite`: the records as a table, and an index of their words. All functions throw
/// DatabaseError.
class Database {
 public:
  /// A new file.
  static Database create(const std::string& path);
  /// One to be changed, without other users.
  static Database change(const std::string& path);
  static Database read(const std::string& path);

  /// Everything up to finish() is one transaction.
  void begin();
  /// Replaces all records of an add-on, the newest first.
  void setRecords(const std::string& key, const std::vector<Record>& records);
  /// Commits. `isNew` also packs the index of the words.
  void finish(std::uint64_t sequence, bool isNew);

  /// Of which root it is.
  std::uint64_t sequence() const;

  /// The newest record that is not yanked of each add-on that has the words, the best first; of
  /// all by name if no word has a letter or digit.
  std::vector<Record> search(const std::vector<std::string>& words, std::uint64_t limit) const;
  /// Those of all add-ons, or of those with these keys, by their names, with the members that a
  /// list shows.
  void visitCurrent(const std::function<void(const Record&)>& visit,
                    const std::set<std::string>* keys = nullptr) const;
  /// The key of the first add-on that comes after one in such a list, those with `keys` left out;
  /// "" if there is none.
  std::string currentAfter(const Record& record, const std::set<std::string>& keys) const;
  /// How many there are.
  std::uint64_t countCurrent() const;

 private:
  explicit Database(Connection connection) : connection_(std::move(connection)) {}

  std::int64_t idOf(const std::string& key);
  void removeAddon(const std::string& key, std::int64_t id);
  std::vector<Record> firstByName(std::uint64_t limit) const;
  /// Appends the versions that are shown of these add-ons, by name.
  void addRecords(const std::vector<std::int64_t>& ids, std::vector<Record>& records) const;
  void insertWords(std::int64_t id, const Record& record);
  void insertVersion(const std::string& key, std::size_t position, const Record& record);

  Connection connection_;
};

/// Of which root the database at `path` is; 0 if it is missing or broken.
std::uint64_t sequenceOfDatabase(const std::string& path);

/// The words as a query of the index: each the beginning of a word, in any column or, after
/// "name:", "author:" or "requires:", in that one. Nothing in them is syntax, and those without a
/// letter or digit are left out: "" if there are no others. `columns`, which may be empty, narrow
/// the other words.
std::string queryOf(const std::vector<std::string>& words, std::string_view columns);

}  // namespace addon::catalogue::detail
