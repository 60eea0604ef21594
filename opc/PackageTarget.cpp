// SPDX-License-Identifier: MIT
#include "opc/PackageTarget.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>

#include "opc/Exception.h"

namespace opc {
namespace {

constexpr int kMaxLinks = 40;  // As many as the kernel follows.

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string realFolder(const std::string& folder) {
  struct Free {
    void operator()(char* text) const { std::free(text); }  // NOLINT: realpath wants it so
  };
  const std::unique_ptr<char, Free> real(::realpath(folder.c_str(), nullptr));
  if (!real) throw SystemError("cannot find folder '" + folder + "'", errno);
  return real.get();
}

// Somebody may change the current folder while a package is open.
std::string absolute(const std::string& path) {
  return path.front() == '/' ? path : realFolder(".") + "/" + path;
}

/// Where the link at `path` points; nothing when there is no link.
std::optional<std::string> readLink(const std::string& path) {
  char target[PATH_MAX];
  const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
  if (length < 0) return std::nullopt;
  if (length == sizeof target) throw SystemError("cannot follow link '" + path + "'", ENAMETOOLONG);
  return std::string(target, static_cast<std::size_t>(length));
}

void requireAccess(const std::string& path, int mode, const char* what) {
  if (::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0) return;
  throw SystemError(std::string(what) + " '" + path + "'", errno);
}

}  // namespace

PackageTarget PackageTarget::resolve(const std::string& path) {
  std::string current = path;
  for (int links = 0; links <= kMaxLinks; ++links) {
    PackageTarget target{realFolder(folderOf(current)), current.substr(current.rfind('/') + 1),
                         absolute(path)};
    if (target.name.empty()) throw SystemError("cannot use '" + path + "' as a file", EISDIR);
    const auto link = readLink(target.path());
    if (!link) return target;
    current = link->front() == '/' ? *link : target.folder + "/" + *link;
  }
  throw SystemError("cannot follow link '" + path + "'", ELOOP);
}

std::string PackageTarget::path() const {
  return folder == "/" ? folder + name : folder + "/" + name;
}

void PackageTarget::requireWritableFolder() const {
  requireAccess(folder, W_OK | X_OK, "cannot write to folder");
}

void PackageTarget::requireWritableFile() const {
  requireAccess(path(), W_OK, "cannot write to file");
}

}  // namespace opc
