// SPDX-License-Identifier: MIT
#include "addon/project/ProjectFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "addon/project/PlainText.h"
#include "opc/Exception.h"
#include "opc/OpenFolder.h"
#include "opc/SystemCall.h"
#include "opc/Text.h"

namespace addon::project {

namespace {

constexpr std::size_t kMaxRemarks = 20;
constexpr std::size_t kMaxIgnoreFileSize = std::size_t{16} << 20;
constexpr std::size_t kBufferSize = std::size_t{64} << 10;

unsigned char typeOf(int folder, const char* name) {
  struct stat status {};
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return DT_UNKNOWN;
  return static_cast<unsigned char>(IFTODT(status.st_mode));
}

std::string realPathOf(const std::string& path) {
  std::error_code error;
  const std::filesystem::path real = std::filesystem::canonical(path, error);
  if (error) {
    throw opc::SystemError("cannot read the folder '" + path + "'", error.value());
  }
  return real.string();
}

}  // namespace

ProjectFolder::ProjectFolder(const std::string& path) : path_(realPathOf(path)) {
  root_.reset(opc::uninterrupted(
      [&] { return ::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!root_) throw opc::SystemError("cannot read the folder '" + path + "'", errno);
  addDefaultExcludes(excludes_);
  excludes_.addLines(read(".kraddonignore", kMaxIgnoreFileSize).value_or(""));
  walk();
}

void ProjectFolder::walk() {
  std::vector<std::string> pending{""};
  while (!pending.empty()) {
    const std::string folder = std::move(pending.back());
    pending.pop_back();
    readFolder(folder, pending);
  }
  std::sort(files_.begin(), files_.end(), [](const std::string& a, const std::string& b) {
    return opc::compareByCodeUnits(a, b) < 0;
  });
  std::sort(remarks_.begin(), remarks_.end());
}

void ProjectFolder::readFolder(const std::string& path, std::vector<std::string>& pending) {
  opc::OpenFolder folder(root_.get(), path, O_NOFOLLOW);
  if (!folder) return remark(path, std::system_category().message(errno));
  while (const dirent* entry = folder.next()) {
    const bool isKnown = entry->d_type != DT_UNKNOWN;
    addEntry(path, entry->d_name,
             isKnown ? entry->d_type : typeOf(folder.descriptor(), entry->d_name), pending);
  }
  if (errno != 0) remark(path, std::system_category().message(errno));
}

void ProjectFolder::addEntry(const std::string& folder, std::string_view name, unsigned char type,
                             std::vector<std::string>& pending) {
  std::string path = folder.empty() ? std::string(name) : folder + "/" + std::string(name);
  if (excludes_.excludes(path, type == DT_DIR)) return;
  if (!isManifestLine(name)) {
    return remark(path, "the name is not UTF-8, or has control characters");
  }
  if (type == DT_DIR) {
    pending.push_back(std::move(path));
  } else if (type == DT_REG || (type == DT_LNK && isFileInside(path))) {
    files_.push_back(std::move(path));
  }
}

bool ProjectFolder::isFileInside(const std::string& path) const {
  std::error_code error;
  const std::filesystem::path target = std::filesystem::canonical(path_ + "/" + path, error);
  if (error || !std::filesystem::is_regular_file(target, error)) return false;
  return target.string().starts_with(path_ == "/" ? path_ : path_ + "/");
}

void ProjectFolder::remark(std::string_view path, std::string_view why) {
  if (remarks_.size() >= kMaxRemarks) return;
  remarks_.push_back("'" + opc::printable(path) + "': " + std::string(why));
}

std::optional<std::string> ProjectFolder::read(const std::string& path, std::size_t most) const {
  std::optional<std::string> content = readStart(path, most + 1);
  if (content && content->size() > most) content.reset();
  return content;
}

std::optional<std::string> ProjectFolder::readStart(const std::string& path,
                                                    std::size_t size) const {
  constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const opc::FileDescriptor file(
      opc::uninterrupted([&] { return ::openat(root_.get(), path.c_str(), kFlags); }));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  std::string content;
  std::vector<char> buffer(std::min(size, kBufferSize));
  while (content.size() < size) {
    const std::size_t wanted = std::min(size - content.size(), buffer.size());
    const ssize_t count =
        opc::uninterrupted([&] { return ::read(file.get(), buffer.data(), wanted); });
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    content.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return content;
}

}  // namespace addon::project
