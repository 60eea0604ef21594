// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/DerivedFiles.h"

#include <fmt/format.h>

#include <optional>
#include <vector>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/Database.h"
#include "addon/catalogue/detail/DatabaseFile.h"
#include "addon/catalogue/detail/DerivedFileChanges.h"
#include "addon/catalogue/detail/Pages.h"
#include "addon/gallery/FrontPage.h"

namespace addon::catalogue::detail {

namespace {

/// If more add-ons have changed, everything is rewritten.
constexpr std::size_t kMaxChanged = 50;

gallery::Card toCard(const Record& record) {
  return {record.name,    record.version,  record.summary, record.author,    record.organization,
          record.license, record.modified, record.page,    record.screenshot};
}

}  // namespace

void DerivedFiles::check() const {
  if (stop_) stop_();
}

bool DerivedFiles::areOf(const SiteState& state) const {
  const auto isOf = [&](std::string_view path) {
    return sequenceAtStart(files_, std::string(path)) == state.sequence();
  };
  // The sequence is in the first line, which a site without versions does not have.
  const bool hasLines = state.root() && state.root()->versions != 0;
  return isOf(kFrontPage) && isOf(kTerms) &&
         (hasLines ? isOf(kRecordLines) : files_.exists(std::string(kRecordLines))) &&
         sequenceOfDatabase(files_.onDisk(kDatabase)) == state.sequence();
}

void DerivedFiles::write(const Request& request) {
  const SiteState& state = request.state;
  if (!request.isOldComplete) writePages(state);
  DatabaseFile database(files_);
  bool isCopied = false;
  {
    const auto copy = [&] { isCopied = database.tryCopy(); };
    const auto copying = request.isOldComplete && starter_ ? starter_(copy) : nullptr;
    writeLines(request);
  }
  const bool isChanged =
      request.isOldComplete && (isCopied || database.copy()) && changeDatabase(request, database);
  if (!isChanged) makeDatabase(request.state);
  try {
    writeFrontPage(request);
  } catch (const DatabaseError& error) {
    // Some damage shows only when everything is read.
    if (!isChanged || error.code() != opc::ErrorCode::Damaged) throw;
    makeDatabase(request.state);
    writeFrontPage(request);
  }
  files_.flush();
}

void DerivedFiles::writePages(const SiteState& state) {
  state.visitRecords([&](const Record& record) {
    check();
    if (!isPageOf(files_, record)) writePage(files_, record, state.sequence());
  });
}

void DerivedFiles::writeLines(const Request& request) {
  const std::string path(kRecordLines);
  std::optional<LinesChange> change;
  std::optional<Pieces> pieces;
  if (request.isOldComplete && request.keys.size() <= kMaxChanged) {
    change.emplace(files_.readDerived(path), request.old);
    pieces = change->make(request.state, request.keys);
  }
  files_.replace(path, [&](const SiteFiles::Sink& sink) {
    // The first line also says of which root they are.
    std::string start = fmt::format(R"({{"sequence":{},)", request.state.sequence());
    const auto write = [&](std::string_view text) {
      sink(start);
      if (!start.empty()) text.remove_prefix(1);
      start.clear();
      sink(text);
    };
    if (pieces) {
      for (const std::string_view piece : *pieces) write(piece);
      return;
    }
    request.state.visitLines([&](std::string_view line) {
      write(line);
      sink("\n");
    });
  });
}

bool DerivedFiles::changeDatabase(const Request& request, DatabaseFile& file) {
  try {
    Database database = Database::change(file.path());
    database.begin();
    for (const std::string& key : request.keys) {
      check();
      database.setRecords(key, request.state.records(key));
    }
    database.finish(request.state.sequence(), false);
  } catch (const DatabaseError& error) {
    if (error.code() != opc::ErrorCode::Damaged) throw;
    return false;
  }
  file.putInPlace();
  return true;
}

void DerivedFiles::makeDatabase(const SiteState& state) {
  DatabaseFile file(files_);
  file.create();
  {
    Database database = Database::create(file.path());
    database.begin();
    for (const auto& [name, reference] : state.index().shards) {
      const Shard shard = state.readShard(name);
      for (const auto& [key, lines] : shard.addons()) {
        check();
        database.setRecords(key, shard.records(key));
      }
    }
    database.finish(state.sequence(), true);
  }
  file.putInPlace();
}

void DerivedFiles::writeFrontPage(const Request& request) {
  const Database database = Database::read(files_.onDisk(kDatabase));
  gallery::FrontPage list;
  list.sequence = request.state.sequence();
  list.addons = database.countCurrent();
  const auto addTo = [this](const std::function<void(const gallery::Card&)>& add) {
    return [this, &add](const Record& record) {
      check();
      add(toCard(record));
    };
  };
  if (request.isOldComplete && request.keys.size() <= kMaxChanged) {
    list.visit = [&](const auto& add) { database.visitCurrent(addTo(add), &request.keys); };
    if (changeFrontPage(list, database, request.keys)) return;
  }
  list.visit = [&](const auto& add) { database.visitCurrent(addTo(add)); };
  putFrontPage(list.sequence, [&](const auto& page, const auto& terms) {
    gallery::writeFrontPage(list, page, terms);
  });
}

bool DerivedFiles::changeFrontPage(const gallery::FrontPage& fresh, const Database& database,
                                   const std::set<std::string>& keys) {
  ListChange::Texts texts;
  gallery::writeFrontPage(
      fresh, [&](std::string_view text) { texts.page += text; },
      [&](std::string_view text) { texts.terms += text; });
  std::vector<Record> records;
  database.visitCurrent([&](const Record& record) { records.push_back(record); }, &keys);
  ListChange change(
      {files_.readDerived(std::string(kFrontPage)), files_.readDerived(std::string(kTerms))});
  if (!change.make(texts, records, database, keys)) return false;
  putFrontPage(fresh.sequence, [&](const auto& page, const auto& terms) {
    for (const std::string_view piece : change.page) page(piece);
    for (const std::string_view piece : change.terms) terms(piece);
  });
  return true;
}

void DerivedFiles::putFrontPage(std::uint64_t sequence, const WriteList& write) {
  files_.replace(std::string(kFrontPage), [&](const SiteFiles::Sink& page) {
    page(fmt::format("<!-- kraddon.front/1 sequence={} -->\n", sequence));
    files_.replace(std::string(kTerms), [&](const SiteFiles::Sink& terms) {
      terms(fmt::format("// kraddon.terms/1 sequence={}\n", sequence));
      write(page, terms);
    });
    // The front page says that all of this is there.
    files_.flush();
  });
}

}  // namespace addon::catalogue::detail
