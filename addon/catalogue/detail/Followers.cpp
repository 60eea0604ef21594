// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Followers.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/Database.h"
#include "addon/catalogue/detail/Pages.h"
#include "addon/gallery/FrontPage.h"
#include "opc/SystemCall.h"
#include "opc/TemporaryFile.h"

namespace addon::catalogue::detail {

using opc::FileDescriptor;
using opc::uninterrupted;

namespace {

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

  /// Makes it a copy of a file of the site. Returns false if that is not there.
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
    if (!file) throw opc::SystemError(fmt::format("cannot write '{}'", path_), errno);
    return file;
  }

  void putInPlace() {
    const FileDescriptor file(uninterrupted(
        [&] { return ::openat(files_.descriptor(), name_.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!file) throw opc::SystemError(fmt::format("cannot write '{}'", path_), errno);
    files_.flushFile(file.get(), name_);
    files_.rename(name_, std::string(kDatabase));
    name_.clear();
  }

 private:
  bool copyPieces(int from, int to) const {
    std::string piece(256u << 10, '\0');
    ::lseek(from, 0, SEEK_SET);
    ::lseek(to, 0, SEEK_SET);
    while (true) {
      const ssize_t count = uninterrupted([&] { return ::read(from, piece.data(), piece.size()); });
      if (count == 0) return true;
      if (count < 0) return false;
      const auto size = static_cast<std::size_t>(count);
      if (uninterrupted([&] { return ::write(to, piece.data(), size); }) != count) {
        throw opc::SystemError(fmt::format("cannot write '{}'", path_), errno);
      }
    }
  }

  SiteFiles& files_;
  std::string name_;
  std::string path_;
};

}  // namespace

void Followers::check() const {
  if (stop_) stop_();
}

bool Followers::areOf(std::uint64_t sequence) const {
  return sequenceAtStart(files_, std::string(kFrontPage)) == sequence &&
         sequenceAtStart(files_, std::string(kTerms)) == sequence &&
         files_.exists(std::string(kDatabase)) && files_.exists(std::string(kRecordLines));
}

void Followers::write(const SiteState& state, const std::set<std::string>& keys,
                      bool areOthersComplete) {
  if (!areOthersComplete) writePages(state);
  writeLines(state);
  writeDatabase(state, keys, areOthersComplete);
  writeFrontPage(state);
  files_.flush();
}

void Followers::writePages(const SiteState& state) {
  state.visitLines([&](std::string_view line) {
    check();
    const Record record = parseRecord(line);
    if (!isPageOf(files_, record)) writePage(files_, record, state.sequence());
  });
}

void Followers::writeLines(const SiteState& state) {
  files_.replace(std::string(kRecordLines), [&](const SiteFiles::Sink& sink) {
    // The first line also says of which root they are.
    std::string start = fmt::format(R"({{"sequence":{},)", state.sequence());
    state.visitLines([&](std::string_view line) {
      sink(start);
      if (!start.empty()) line.remove_prefix(1);
      sink(line);
      sink("\n");
      start.clear();
    });
  });
}

void Followers::writeDatabase(const SiteState& state, const std::set<std::string>& keys,
                              bool isChange) {
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
    const Shard& shard = state.shard(name);
    for (const auto& [key, lines] : shard.addons()) {
      check();
      database.setRecords(key, shard.records(key));
    }
  }
  database.finish(state.sequence(), true);
}

void Followers::writeFrontPage(const SiteState& state) {
  const Database database = Database::read(files_.onDisk(kDatabase));
  gallery::FrontPage list;
  list.sequence = state.sequence();
  list.addons = database.countCurrent();
  list.visit = [&](const std::function<void(const gallery::Card&)>& add) {
    database.visitCurrent([&](const Record& record) {
      check();
      add({record.name, record.version, record.summary, record.author, record.organization,
           record.license, record.modified, record.page, record.screenshot});
    });
  };
  files_.replace(std::string(kFrontPage), [&](const SiteFiles::Sink& page) {
    page(fmt::format("<!-- kraddon.front/1 sequence={} -->\n", list.sequence));
    files_.replace(std::string(kTerms), [&](const SiteFiles::Sink& terms) {
      terms(fmt::format("// kraddon.terms/1 sequence={}\n", list.sequence));
      gallery::writeFrontPage(list, page, terms);
    });
    // The front page says that all of this is there.
    files_.flush();
  });
}

}  // namespace addon::catalogue::detail
