// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Followers.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <vector>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/Database.h"
#include "addon/catalogue/detail/FollowerChanges.h"
#include "addon/catalogue/detail/Pages.h"
#include "addon/gallery/FrontPage.h"
#include "opc/FileIo.h"
#include "opc/SystemCall.h"
#include "opc/TemporaryFile.h"

namespace addon::catalogue::detail {

using opc::FileDescriptor;
using opc::uninterrupted;

namespace {

/// For more add-ons than that, everything is written anew.
constexpr std::size_t kMostChanged = 50;

gallery::Card toCard(const Record& record) {
  return {record.name,    record.version,  record.summary, record.author,    record.organization,
          record.license, record.modified, record.page,    record.screenshot};
}

/// A file in the making that SQLite opens by a name.
class NamedFile {
 public:
  explicit NamedFile(SiteFiles& files)
      : files_(files), name_(opc::temporaryName(kDatabase)), path_(files.onDisk(name_)) {}
  ~NamedFile() {
    if (!name_.empty()) ::unlinkat(files_.descriptor(), name_.c_str(), 0);
  }
  NamedFile(const NamedFile&) = delete;
  NamedFile& operator=(const NamedFile&) = delete;

  const std::string& path() const { return path_; }

  /// Makes it a copy of a file of the site. Returns false if that is missing or cannot be read.
  bool copy(const std::string& other) const {
    const FileDescriptor from(uninterrupted(
        [&] { return ::openat(files_.descriptor(), other.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!from) return false;
    const FileDescriptor to = create();
    constexpr std::size_t kMost = std::size_t{1} << 30;
    while (true) {
      // Where the file system can, the copy shares the blocks.
      const ssize_t count = uninterrupted(
          [&] { return ::copy_file_range(from.get(), nullptr, to.get(), nullptr, kMost, 0); });
      if (count == 0) return true;
      if (count < 0) return copyPieces(from.get(), to.get());
    }
  }

  FileDescriptor create() const {
    constexpr int kFlags = O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
    FileDescriptor file(
        uninterrupted([&] { return ::openat(files_.descriptor(), name_.c_str(), kFlags, 0666); }));
    if (!file) throw opc::SystemError(what(), errno);
    return file;
  }

  void putInPlace() {
    const FileDescriptor file(uninterrupted(
        [&] { return ::openat(files_.descriptor(), name_.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!file) throw opc::SystemError(what(), errno);
    files_.flushFile(file.get(), name_);
    files_.rename(name_, std::string(kDatabase));
    name_.clear();
  }

 private:
  bool copyPieces(int from, int to) const {
    std::string piece(256u << 10, '\0');
    std::uint64_t done = 0;
    while (true) {
      const ssize_t count = uninterrupted(
          [&] { return ::pread(from, piece.data(), piece.size(), static_cast<off_t>(done)); });
      if (count <= 0) return count == 0;
      const auto size = static_cast<std::size_t>(count);
      opc::writeFully(to, done, piece.data(), size, what());
      done += size;
    }
  }

  std::string what() const { return fmt::format("cannot write '{}'", files_.onDisk(kDatabase)); }

  SiteFiles& files_;
  std::string name_;
  std::string path_;
};

}  // namespace

void Followers::check() const {
  if (stop_) stop_();
}

bool Followers::areOf(const SiteState& state) const {
  const auto isOf = [&](std::string_view path) {
    return sequenceAtStart(files_, std::string(path)) == state.sequence();
  };
  // Without versions there is no line that could say it.
  const bool hasLines = state.root() && state.root()->versions != 0;
  return isOf(kFrontPage) && isOf(kTerms) &&
         (hasLines ? isOf(kRecordLines) : files_.exists(std::string(kRecordLines))) &&
         sequenceOfDatabase(files_.onDisk(kDatabase)) == state.sequence();
}

void Followers::write(const Request& request) {
  const SiteState& state = request.state;
  if (!request.isOldComplete) writePages(state);
  writeLines(request);
  writeDatabase(state, request.keys, request.isOldComplete);
  writeFrontPage(request);
  files_.flush();
}

void Followers::writePages(const SiteState& state) {
  state.visitRecords([&](const Record& record) {
    check();
    if (!isPageOf(files_, record)) writePage(files_, record, state.sequence());
  });
}

void Followers::writeLines(const Request& request) {
  const std::string path(kRecordLines);
  std::optional<LinesChange> change;
  std::optional<Pieces> pieces;
  if (request.isOldComplete && request.keys.size() <= kMostChanged) {
    change.emplace(files_.readFollower(path), request.old);
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

void Followers::writeDatabase(const SiteState& state, const std::set<std::string>& keys,
                              bool isChange) {
  // SQLite needs a name, which a killed process leaves behind.
  opc::removeAbandonedFiles(files_.descriptor(), std::string(kDatabase));
  NamedFile file(files_);
  if (isChange && file.copy(std::string(kDatabase))) {
    try {
      changeDatabase(file.path(), state, keys);
      return file.putInPlace();
    } catch (const DatabaseError& error) {
      // One that somebody damaged is made anew.
      if (error.code() != opc::ErrorCode::Damaged) throw;
    }
  }
  file.create();
  makeDatabase(file.path(), state);
  file.putInPlace();
}

void Followers::changeDatabase(const std::string& path, const SiteState& state,
                               const std::set<std::string>& keys) {
  Database database = Database::change(path);
  database.begin();
  for (const std::string& key : keys) {
    check();
    database.setRecords(key, state.records(key));
  }
  database.finish(state.sequence(), false);
}

void Followers::makeDatabase(const std::string& path, const SiteState& state) {
  Database database = Database::create(path);
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

void Followers::writeFrontPage(const Request& request) {
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
  if (request.isOldComplete && request.keys.size() <= kMostChanged) {
    list.visit = [&](const auto& add) { database.visitCurrent(addTo(add), &request.keys); };
    if (changeFrontPage(list, database, request.keys)) return;
  }
  list.visit = [&](const auto& add) { database.visitCurrent(addTo(add)); };
  putFrontPage(list.sequence, [&](const auto& page, const auto& terms) {
    gallery::writeFrontPage(list, page, terms);
  });
}

bool Followers::changeFrontPage(const gallery::FrontPage& fresh, const Database& database,
                                const std::set<std::string>& keys) {
  ListChange::Texts texts;
  gallery::writeFrontPage(
      fresh, [&](std::string_view text) { texts.page += text; },
      [&](std::string_view text) { texts.terms += text; });
  std::vector<Record> records;
  database.visitCurrent([&](const Record& record) { records.push_back(record); }, &keys);
  ListChange change(
      {files_.readFollower(std::string(kFrontPage)), files_.readFollower(std::string(kTerms))});
  if (!change.make(texts, records, database, keys)) return false;
  putFrontPage(fresh.sequence, [&](const auto& page, const auto& terms) {
    for (const std::string_view piece : change.page) page(piece);
    for (const std::string_view piece : change.terms) terms(piece);
  });
  return true;
}

void Followers::putFrontPage(std::uint64_t sequence, const WriteList& write) {
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
