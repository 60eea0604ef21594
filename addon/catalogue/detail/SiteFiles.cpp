// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/SiteFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "addon/catalogue/SitePaths.h"
#include "opc/FileIo.h"
#include "opc/SystemCall.h"
#include "text/Sha256.h"

namespace addon::catalogue::detail {

using opc::FileDescriptor;
using opc::uninterrupted;

namespace {

constexpr std::size_t kBufferSize = 256u << 10;
/// Larger than any root, index or shard that is read whole.
constexpr std::uint64_t kMaxTextSize = std::uint64_t{256} << 20;

std::string parentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

FileDescriptor openAt(int folder, const std::string& path) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  return FileDescriptor(uninterrupted([&] { return ::openat(folder, path.c_str(), kFlags); }));
}

/// Collects small pieces into large writes. Throws opc::SystemError that begins with `what`.
class FileSink {
 public:
  FileSink(int file, std::string what) : file_(file), what_(std::move(what)) {}

  void write(std::string_view piece) {
    if (piece.size() < kBufferSize) {
      buffer_ += piece;
      if (buffer_.size() >= kBufferSize) flush();
      return;
    }
    flush();
    opc::writeFully(file_, piece.data(), piece.size(), what_);
  }

  void flush() {
    opc::writeFully(file_, buffer_.data(), buffer_.size(), what_);
    buffer_.clear();
  }

 private:
  int file_;
  std::string what_;
  std::string buffer_;
};

}  // namespace

SiteFiles::SiteFiles(std::string folder) : folder_(std::move(folder)) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  descriptor_.reset(uninterrupted([&] { return ::open(folder_.c_str(), kFlags); }));
  if (!descriptor_) throw opc::SystemError("cannot open site '" + folder_ + "'", errno);
}

void SiteFiles::fail(std::string_view what, std::string_view path, int number) const {
  throw opc::SystemError(std::string(what) + " '" + onDisk(path) + "'", number);
}

std::string SiteFiles::onDisk(std::string_view path) const {
  std::string whole = folder_;
  if (!whole.ends_with('/')) whole += '/';
  return whole += path;
}

bool SiteFiles::exists(const std::string& path) const {
  return timeOf(path).has_value();
}

std::optional<std::time_t> SiteFiles::timeOf(const std::string& path) const {
  struct stat status {};
  if (::fstatat(descriptor_.get(), path.c_str(), &status, 0) == 0) return status.st_mtim.tv_sec;
  if (errno != ENOENT && errno != ENOTDIR) fail("cannot read", path, errno);
  return std::nullopt;
}

FileDescriptor SiteFiles::openFile(const std::string& path, std::uint64_t& size) const {
  FileDescriptor file = openAt(descriptor_.get(), path);
  if (!file) {
    if (errno == ENOENT || errno == ENOTDIR) return file;
    fail("cannot read", path, errno);
  }
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) fail("cannot read", path, errno);
  if (!S_ISREG(status.st_mode)) throw BrokenSite(onDisk(path), "it is not a file");
  size = static_cast<std::uint64_t>(status.st_size);
  return file;
}

std::size_t SiteFiles::readInto(int file, const std::string& path, char* text,
                                std::size_t size) const {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = uninterrupted([&] { return ::read(file, text + done, size - done); });
    if (count < 0) fail("cannot read", path, errno);
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

std::optional<std::string> SiteFiles::read(const std::string& path) const {
  std::uint64_t size = 0;
  const FileDescriptor file = openFile(path, size);
  if (!file) return std::nullopt;
  if (size > kMaxTextSize) throw BrokenSite(onDisk(path), "it is too large");
  std::string text(static_cast<std::size_t>(size), '\0');
  text.resize(readInto(file.get(), path, text.data(), text.size()));
  return text;
}

opc::ByteBuffer SiteFiles::readDerived(const std::string& path) const {
  opc::ByteBuffer text;
  std::uint64_t size = 0;
  const FileDescriptor file = openFile(path, size);
  if (!file || size > kMaxTextSize) return text;
  text.resizeForOverwrite(static_cast<std::size_t>(size));
  opc::prefault(text.data(), text.size());
  const auto start = reinterpret_cast<char*>(text.data());
  text.resizeForOverwrite(readInto(file.get(), path, start, text.size()));
  return text;
}

std::string SiteFiles::read(const FileReference& file) const {
  std::optional<std::string> text = read(file.path);
  if (!text) throw BrokenSite(onDisk(file.path), "it is missing");
  if (text->size() != file.size || text::sha256Of(*text) != file.sha256) {
    throw BrokenSite(onDisk(file.path), "it is not what its name says");
  }
  return *std::move(text);
}

std::string SiteFiles::readStart(const std::string& path, std::size_t size) const {
  const FileDescriptor file = openAt(descriptor_.get(), path);
  std::string text(size, '\0');
  const ssize_t count =
      file ? uninterrupted([&] { return ::read(file.get(), text.data(), size); }) : -1;
  text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  return text;
}

std::string SiteFiles::hashOf(const std::string& path) const {
  const FileDescriptor file = openAt(descriptor_.get(), path);
  if (!file) {
    if (errno == ENOENT) return {};
    fail("cannot read", path, errno);
  }
  text::Sha256 hash;
  std::string piece(kBufferSize, '\0');
  while (true) {
    const ssize_t count =
        uninterrupted([&] { return ::read(file.get(), piece.data(), piece.size()); });
    if (count < 0) fail("cannot read", path, errno);
    if (count == 0) return hash.finish();
    hash.update(std::string_view(piece).substr(0, static_cast<std::size_t>(count)));
  }
}

void SiteFiles::noteFolderOf(const std::string& path) {
  if (flushing_ == Flushing::Together) return;
  const std::lock_guard lock(mutex_);
  folders_.insert(parentOf(path));
}

void SiteFiles::makeFolder(const std::string& path) {
  if (::mkdirat(descriptor_.get(), path.c_str(), 0777) == 0) return noteFolderOf(path);
  if (errno == ENOENT && path.find('/') != std::string::npos) {
    makeFolder(parentOf(path));
    if (::mkdirat(descriptor_.get(), path.c_str(), 0777) == 0) return noteFolderOf(path);
  }
  if (errno != EEXIST) fail("cannot make folder", path, errno);
}

FileReference SiteFiles::writeHashed(std::string_view folder, std::string_view extension,
                                     std::string_view content) {
  FileReference file;
  file.sha256 = text::sha256Of(content);
  file.path = hashedPath(folder, file.sha256, extension);
  file.size = content.size();
  // One that a power failure cut short is written again.
  if (hashOf(file.path) != file.sha256) replace(file.path, content);
  return file;
}

void SiteFiles::replace(const std::string& path, std::string_view content) {
  replace(path, [&](const Sink& sink) { sink(content); });
}

void SiteFiles::replace(const std::string& path, const std::function<void(const Sink&)>& write) {
  opc::TemporaryFile file;
  if (!file.create(descriptor_.get(), path, 0666)) fail("cannot write", path, errno);
  FileSink sink(file.descriptor(), "cannot write '" + onDisk(path) + "'");
  write([&](std::string_view piece) { sink.write(piece); });
  sink.flush();
  putInPlace(file, path);
}

void SiteFiles::putInPlace(opc::TemporaryFile& file, const std::string& path) {
  flushFile(file.descriptor(), path);
  if (!file.finishWriting() || !file.putInPlace(true)) fail("cannot write", path, errno);
  noteFolderOf(path);
}

void SiteFiles::rename(const std::string& from, const std::string& to) {
  const int folder = descriptor_.get();
  if (uninterrupted([&] { return ::renameat(folder, from.c_str(), folder, to.c_str()); }) != 0) {
    fail("cannot write", to, errno);
  }
  noteFolderOf(to);
}

void SiteFiles::remove(const std::string& path) {
  if (::unlinkat(descriptor_.get(), path.c_str(), 0) != 0 && errno != ENOENT) {
    fail("cannot remove", path, errno);
  }
}

void SiteFiles::touch(const std::string& path) {
  if (::utimensat(descriptor_.get(), path.c_str(), nullptr, 0) == 0 || errno == ENOENT) return;
  if (errno != EACCES && errno != EPERM) fail("cannot set the time of", path, errno);
  replaceByCopy(path);
}

void SiteFiles::replaceByCopy(const std::string& path) {
  const std::optional<std::string> content = read(path);
  if (!content) return;
  // The current root may name it: its bytes have to be on the disk before the name leads to them.
  const Flushing usual = setFlushing(Flushing::Each);
  replace(path, *content);
  setFlushing(usual);
}

void SiteFiles::flushFile(int file, std::string_view path) const {
  if (flushing_ == Flushing::Together) return;
  if (uninterrupted([&] { return ::fsync(file); }) != 0) fail("cannot write", path, errno);
}

void SiteFiles::flush() {
  if (flushing_ == Flushing::Together) {
    if (::syncfs(descriptor_.get()) != 0) fail("cannot write", "", errno);
    return;
  }
  for (const std::string& path : std::exchange(folders_, {})) {
    const FileDescriptor folder = openAt(descriptor_.get(), path);
    if (!folder || uninterrupted([&] { return ::fsync(folder.get()); }) != 0) {
      fail("cannot write", path, errno);
    }
  }
}

}  // namespace addon::catalogue::detail
