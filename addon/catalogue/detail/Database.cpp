// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Database.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <span>
#include <tuple>
#include <utility>

#include "addon/catalogue/Shard.h"
#include "addon/catalogue/SitePaths.h"
#include "addon/gallery/Words.h"
#include "opc/Text.h"
#include "text/Sha256.h"

namespace addon::catalogue::detail {

namespace {

constexpr const char* kSchema = "kraddon.catalogue/2";

/// The statement that makes the tables. `addons` has the version to be shown of each add-on, and
/// `texts` its words as they are compared, which `words` needs again to forget them. All that is
/// between them is blanks, the only separators of the tokenizer.
std::string tables() {
  std::string columns;
  for (const RecordField& field : recordFields()) {
    const bool isNumber = std::holds_alternative<std::uint64_t Record::*>(field.member) ||
                          std::holds_alternative<bool Record::*>(field.member);
    const bool isOptional = std::holds_alternative<OptionalText>(field.member);
    columns += fmt::format(", \"{}\" {}{}", field.name, isNumber ? "INTEGER" : "TEXT",
                           isOptional ? "" : " NOT NULL");
  }
  return fmt::format(
      "CREATE TABLE meta(key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
      "CREATE TABLE versions(addon TEXT NOT NULL, position INTEGER NOT NULL{});"
      "CREATE UNIQUE INDEX versions_of_addons ON versions(addon, position);"
      "CREATE INDEX versions_by_name ON versions(name COLLATE NOCASE, addon, position);"
      "CREATE TABLE addons(id INTEGER PRIMARY KEY, addon TEXT NOT NULL UNIQUE,"
      " position INTEGER NOT NULL, requires TEXT NOT NULL);"
      "CREATE TABLE texts(id INTEGER PRIMARY KEY, name TEXT NOT NULL, author TEXT NOT NULL,"
      " summary TEXT NOT NULL, description TEXT NOT NULL, requires TEXT NOT NULL);"
      "CREATE VIRTUAL TABLE words USING fts5(name, author, summary, description, requires,"
      " content = 'texts', content_rowid = 'id', prefix = '1 2 3',"
      " tokenize = 'ascii');",
      columns);
}

using Fields = std::span<const RecordField>;

/// What a list of add-ons shows. Others, which may be long, need not be read for that.
std::vector<RecordField> listedFields() {
  constexpr std::array<std::string_view, 10> kNames{
      "guid",    "name",     "version",      "summary", "author",
      "license", "modified", "organization", "page",    "screenshot"};
  std::vector<RecordField> fields;
  for (const RecordField& field : recordFields()) {
    if (std::find(kNames.begin(), kNames.end(), field.name) != kNames.end()) {
      fields.push_back(field);
    }
  }
  return fields;
}

std::string columnsOf(std::string_view table, Fields fields = recordFields()) {
  std::string columns;
  for (const RecordField& field : fields) {
    columns += fmt::format("{}{}.\"{}\"", columns.empty() ? "" : ", ", table, field.name);
  }
  return columns;
}

template <typename List>
std::string jsonOf(const List& list) {
  std::string text;
  text::JsonWriter json(text, text::JsonWriter::Layout::Compact);
  writeList(list, json);
  return text;
}

/// Binds a member to a parameter.
struct Binder {
  const Record& record;
  Statement& statement;
  int parameter;

  void operator()(std::string Record::*member) const { statement.bind(parameter, record.*member); }
  void operator()(OptionalText member) const {
    const std::string& text = record.*member.text;
    text.empty() ? statement.bindNull(parameter) : statement.bind(parameter, text);
  }
  void operator()(std::uint64_t Record::*member) const {
    statement.bind(parameter, static_cast<std::int64_t>(record.*member));
  }
  void operator()(bool Record::*member) const {
    statement.bind(parameter, std::int64_t{record.*member});
  }
  template <typename Element>
  void operator()(std::vector<Element> Record::*member) const {
    statement.bind(parameter, jsonOf(record.*member));
  }
};

/// Reads a member from a column.
struct ColumnReader {
  Record& record;
  const Statement& statement;
  int column;

  void operator()(std::string Record::*member) const { record.*member = statement.text(column); }
  void operator()(OptionalText member) const { record.*member.text = statement.text(column); }
  void operator()(std::uint64_t Record::*member) const {
    record.*member = static_cast<std::uint64_t>(statement.number(column));
  }
  void operator()(bool Record::*member) const { record.*member = statement.number(column) != 0; }
  template <typename Element>
  void operator()(std::vector<Element> Record::*member) const {
    readList(statement.text(column), record.*member);
  }
};

Record recordOf(const Statement& statement, Fields fields = recordFields()) {
  Record record;
  int column = 0;
  for (const RecordField& field : fields) {
    try {
      std::visit(ColumnReader{record, statement, column++}, field.member);
    } catch (const text::JsonError& error) {
      throw DatabaseError(statement.path(),
                          fmt::format("column '{}': {}", field.name, error.what()));
    }
  }
  return record;
}

/// A number of 40 bits that the key decides, so that rows hardly ever depend on the order in which
/// add-ons came.
std::int64_t preferredId(const std::string& key) {
  constexpr std::size_t kDigits = 10;
  const std::string hash = text::sha256Of(key);
  std::int64_t id = 0;
  std::from_chars(hash.data(), hash.data() + kDigits, id, 16);
  return id;
}

/// The names of what an add-on needs, for the index of words.
std::string requirementsOf(const Record& record) {
  std::string text;
  for (const Requirement& each : record.requirements) {
    text += fmt::format("{} {} ", each.name, each.identifier);
  }
  return text;
}

/// What follows the columns of a list in the order of the front page.
std::string currentByName(std::string_view which) {
  return fmt::format(
      "FROM addons JOIN versions USING (addon, position){}"
      " ORDER BY versions.name COLLATE NOCASE, addon",
      which);
}

struct Column {
  std::string_view prefix;
  std::string_view name;
};
constexpr std::array kColumns{Column{"name:", "name"}, Column{"author:", "author"},
                              Column{"requires:", "requires"}};

/// "" for a word without letters and digits.
std::string termOf(std::string_view word, std::string_view columns) {
  std::string column = columns.empty() ? std::string() : fmt::format("{{{}}} : ", columns);
  for (const Column& each : kColumns) {
    if (!word.starts_with(each.prefix) || word.size() == each.prefix.size()) continue;
    column = fmt::format("{{{}}} : ", each.name);
    word.remove_prefix(each.prefix.size());
    break;
  }
  const std::string term = gallery::wordsOf(word);
  return term.empty() ? term : fmt::format("{}\"{}\" *", column, term);
}

}  // namespace

Database Database::create(const std::string& path) {
  Database database(Connection(path, Connection::Mode::Build));
  database.connection_.run(tables().c_str());
  return database;
}

Database Database::change(const std::string& path) {
  return Database(Connection(path, Connection::Mode::Build));
}

Database Database::read(const std::string& path) {
  return Database(Connection(path, Connection::Mode::Read));
}

void Database::begin() {
  connection_.run("BEGIN");
}

std::int64_t Database::idOf(const std::string& key) {
  Statement find = connection_.prepare("SELECT id FROM addons WHERE addon = ?");
  find.bind(0, key);
  return find.step() ? find.number(0) : -1;
}

void Database::removeAddon(const std::string& key, std::int64_t id) {
  if (id >= 0) {
    // The index must get the very texts that it has.
    connection_
        .prepare(
            "INSERT INTO words(words, rowid, name, author, summary, description, requires)"
            " SELECT 'delete', * FROM texts WHERE id = ?")
        .bind(0, id)
        .run();
    connection_.prepare("DELETE FROM texts WHERE id = ?").bind(0, id).run();
    connection_.prepare("DELETE FROM addons WHERE id = ?").bind(0, id).run();
  }
  connection_.prepare("DELETE FROM versions WHERE addon = ?").bind(0, key).run();
}

void Database::insertVersion(const std::string& key, std::size_t position, const Record& record) {
  std::string values = "?, ?";
  for (std::size_t i = 0; i < recordFields().size(); ++i) values += ", ?";
  Statement insert = connection_.prepare("INSERT INTO versions VALUES(" + values + ")");
  insert.bind(0, key).bind(1, static_cast<std::int64_t>(position));
  int parameter = 2;
  for (const RecordField& field : recordFields()) {
    std::visit(Binder{record, insert, parameter++}, field.member);
  }
  insert.run();
}

void Database::setRecords(const std::string& key, const std::vector<Record>& records) {
  std::int64_t id = idOf(key);
  removeAddon(key, id);
  for (std::size_t i = 0; i < records.size(); ++i) insertVersion(key, i, records[i]);
  const Record* current = currentOf(records);
  if (current == nullptr) return;
  if (id < 0) {
    id = preferredId(key);
    Statement taken = connection_.prepare("SELECT 1 FROM addons WHERE id = ?");
    for (taken.bind(0, id); taken.step(); taken.bind(0, ++id)) taken.reset();
  }
  connection_.prepare("INSERT INTO addons VALUES(?, ?, ?, ?)")
      .bind(0, id)
      .bind(1, key)
      .bind(2, std::int64_t{current - records.data()})
      .bind(3, requirementsOf(*current))
      .run();
  insertWords(id, *current);
}

void Database::insertWords(std::int64_t id, const Record& record) {
  connection_.prepare("INSERT INTO texts VALUES(?, ?, ?, ?, ?, ?)")
      .bind(0, id)
      .bind(1, gallery::wordsOf(record.name))
      .bind(2, gallery::wordsOf(record.author) + gallery::wordsOf(record.organization))
      .bind(3, gallery::wordsOf(record.summary))
      .bind(4, gallery::wordsOf(record.description))
      .bind(5, gallery::wordsOf(requirementsOf(record)))
      .run();
  connection_
      .prepare(
          "INSERT INTO words(rowid, name, author, summary, description, requires)"
          " SELECT * FROM texts WHERE id = ?")
      .bind(0, id)
      .run();
}

void Database::finish(std::uint64_t sequence, bool isNew) {
  if (isNew) connection_.run("INSERT INTO words(words) VALUES('optimize')");
  Statement set = connection_.prepare("INSERT OR REPLACE INTO meta VALUES(?, ?)");
  set.bind(0, "schema").bind(1, std::string_view(kSchema)).run();
  set.bind(0, "sequence").bind(1, std::string_view(std::to_string(sequence))).run();
  connection_.run("COMMIT");
}

std::uint64_t Database::sequence() const {
  Statement get = connection_.prepare(
      "SELECT s.value FROM meta AS s JOIN meta AS m ON m.key = 'schema' AND m.value = ?"
      " WHERE s.key = 'sequence'");
  get.bind(0, std::string_view(kSchema));
  return get.step() ? static_cast<std::uint64_t>(get.number(0)) : 0;
}

std::vector<Record> Database::search(const std::vector<std::string>& words,
                                     std::uint64_t limit) const {
  if (queryOf(words, "").empty()) return firstByName(limit);
  // The best have all words in their names. To rank all matches would take a time that grows with
  // their number.
  std::vector<std::int64_t> ids;
  Statement find = connection_.prepare("SELECT rowid FROM words WHERE words MATCH ? LIMIT ?");
  std::vector<Record> records;
  for (const std::string_view columns : {"name", "name author summary", ""}) {
    const std::size_t before = ids.size();
    find.bind(0, queryOf(words, columns)).bind(1, static_cast<std::int64_t>(limit + before));
    while (ids.size() < limit && find.step()) {
      const std::int64_t id = find.number(0);
      const auto known = ids.begin() + static_cast<std::ptrdiff_t>(before);
      if (!std::binary_search(ids.begin(), known, id)) ids.push_back(id);
    }
    find.reset();
    addRecords({ids.begin() + static_cast<std::ptrdiff_t>(before), ids.end()}, records);
    std::sort(ids.begin(), ids.end());
    if (ids.size() == limit) break;
  }
  return records;
}

std::vector<Record> Database::firstByName(std::uint64_t limit) const {
  Statement list = connection_.prepare(
      fmt::format("SELECT {} {} LIMIT ?", columnsOf("versions"), currentByName("")));
  std::vector<Record> records;
  list.bind(0, static_cast<std::int64_t>(limit));
  while (list.step()) records.push_back(recordOf(list));
  return records;
}

void Database::addRecords(const std::vector<std::int64_t>& ids,
                          std::vector<Record>& records) const {
  const auto first = static_cast<std::ptrdiff_t>(records.size());
  Statement get = connection_.prepare(
      fmt::format("SELECT {} FROM addons JOIN versions USING (addon, position) WHERE id = ?",
                  columnsOf("versions")));
  for (const std::int64_t id : ids) {
    if (get.bind(0, id).step()) records.push_back(recordOf(get));
    get.reset();
  }
  std::sort(records.begin() + first, records.end(), [](const Record& a, const Record& b) {
    return std::tie(a.name, a.guid) < std::tie(b.name, b.guid);
  });
}

void Database::visitCurrent(const std::function<void(const Record&)>& visit,
                            const std::set<std::string>* keys) const {
  const std::vector<RecordField> fields = listedFields();
  std::string which;
  if (keys != nullptr) {
    for (std::size_t i = 0; i < keys->size(); ++i) which += which.empty() ? "?" : ", ?";
    which = " WHERE addon IN (" + which + ")";
  }
  Statement list = connection_.prepare(
      fmt::format("SELECT {} {}", columnsOf("versions", fields), currentByName(which)));
  int parameter = 0;
  if (keys != nullptr) {
    for (const std::string& key : *keys) list.bind(parameter++, key);
  }
  while (list.step()) visit(recordOf(list, fields));
}

std::string Database::currentAfter(const Record& record, const std::set<std::string>& keys) const {
  Statement next = connection_.prepare(
      "SELECT versions.addon FROM versions CROSS JOIN addons USING (addon, position)"
      // Two conditions, since SQLite finds the first row by the first one only.
      " WHERE versions.name >= ?1 COLLATE NOCASE"
      " AND (versions.name COLLATE NOCASE, versions.addon) > (?1, ?2)"
      " ORDER BY versions.name COLLATE NOCASE, versions.addon");
  next.bind(0, record.name).bind(1, keyOf(record.guid));
  while (next.step()) {
    std::string key = next.text(0);
    if (!keys.contains(key)) return key;
  }
  return {};
}

std::uint64_t Database::countCurrent() const {
  Statement count = connection_.prepare("SELECT count(*) FROM addons");
  return count.step() ? static_cast<std::uint64_t>(count.number(0)) : 0;
}

std::uint64_t sequenceOfDatabase(const std::string& path) {
  try {
    return Database::read(path).sequence();
  } catch (const DatabaseError&) {
    return 0;
  }
}

std::string queryOf(const std::vector<std::string>& words, std::string_view columns) {
  std::string query;
  for (const std::string& word : words) {
    const std::string term = termOf(word, columns);
    if (!query.empty() && !term.empty()) query += " AND ";
    query += term;
  }
  return query;
}

}  // namespace addon::catalogue::detail
