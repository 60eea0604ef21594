// SPDX-License-Identifier: MIT
#include "opc/FilePermissions.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>

#include "opc/Exception.h"
#include "opc/SystemCall.h"

namespace opc {
namespace {

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr std::string_view kUserPrefix = "user.";
constexpr mode_t kAllRights = 0777;
constexpr mode_t kRightsToWrite = 0222;

bool isUnsupported(int number) {
  return number == EOPNOTSUPP || number == ENOSYS;
}

/// Returns the bytes that `call` reads into a buffer, which grows once if it is too small. Returns
/// nothing if the attribute does not exist or the file system does not support attributes.
template <typename Call>
std::optional<std::string> filled(const Call& call, const char* what) {
  constexpr std::size_t kUsual = 256;
  constexpr std::size_t kMaxSize = std::size_t{64} << 10;
  for (std::size_t room = kUsual;; room = kMaxSize) {
    std::string bytes(room, '\0');
    const ssize_t size = uninterrupted([&] { return call(bytes.data(), room); });
    if (size >= 0) {
      bytes.resize(static_cast<std::size_t>(size));
      return bytes;
    }
    if (errno == ENODATA || isUnsupported(errno)) return std::nullopt;
    if (errno != ERANGE || room == kMaxSize) throw SystemError(what, errno);
  }
}

std::optional<std::string> readAttribute(const std::string& path, const char* name) {
  return filled(
      [&](char* into, std::size_t room) { return ::getxattr(path.c_str(), name, into, room); },
      "cannot read an attribute of the old file");
}

void setAttribute(int file, const char* name, const std::string& value) {
  const auto set = [&] { return ::fsetxattr(file, name, value.data(), value.size(), 0); };
  if (uninterrupted(set) == 0) return;
  throw SystemError("cannot set an attribute of a temporary file", errno);
}

void copyUserAttributes(const std::string& path, int to) {
  const std::optional<std::string> names =
      filled([&](char* into, std::size_t room) { return ::listxattr(path.c_str(), into, room); },
             "cannot list the attributes of the old file");
  if (!names) return;
  for (std::size_t at = 0; at < names->size(); at += std::strlen(names->data() + at) + 1) {
    const char* name = names->data() + at;
    if (!std::string_view(name).starts_with(kUserPrefix)) continue;
    if (const auto value = readAttribute(path, name)) setAttribute(to, name, *value);
  }
}

/// What of its old owner and group a file could keep.
struct Kept {
  bool owner = true;
  bool group = true;
};

Kept copyOwner(const struct stat& old, int to) {
  const auto give = [&](uid_t user) {
    return uninterrupted([&] { return ::fchown(to, user, old.st_gid); }) == 0;
  };
  if (give(old.st_uid)) return {};
  give(static_cast<uid_t>(-1));  // Best effort: the group at least.
  struct stat now {};
  if (::fstat(to, &now) != 0) throw SystemError("cannot look at a temporary file", errno);
  return {.owner = now.st_uid == old.st_uid, .group = now.st_gid == old.st_gid};
}

struct Classes {
  unsigned user = 0;
  unsigned group = 0;
  unsigned other = 0;
};

// Members of the old group may now count as others, and others as members of the new group. The
// old owner is among them.
void cut(Classes& rights, const Kept& kept) {
  if (!kept.group) rights.group = rights.other = rights.group & rights.other;
  if (kept.owner) return;
  rights.group &= rights.user;
  rights.other &= rights.user;
}

/// An access control list in the form in which the system hands it out: a version of four bytes,
/// then entries of eight, of which the first two are the tag and the next two the rights.
class AccessList {
 public:
  explicit AccessList(std::string bytes) : bytes_(std::move(bytes)) {
    constexpr char kVersion = 2;
    if (bytes_.size() < kHeader || bytes_[0] != kVersion) {
      throw SystemError("cannot read the access control list of the old file", EOPNOTSUPP);
    }
  }

  const std::string& bytes() const { return bytes_; }

  /// Cuts it, and returns the mode that goes with it.
  mode_t limit(const Kept& kept, mode_t allowed) {
    const unsigned mask = find(kMask) == 0 ? kAll : rights(find(kMask));
    const unsigned group = rights(find(kGroup));
    Classes classes{rights(find(kUser)), group & mask, rights(find(kOther))};
    cut(classes, kept);
    // A member of the new group who also is in a group of the list had the rights of that.
    setRights(find(kGroup), kept.group ? group & (classes.group | ~mask) : 0);
    setRights(find(kOther), classes.other);
    for (std::size_t at = kHeader; at + kEntry <= bytes_.size(); at += kEntry) {
      setRights(at, rights(at) & allowed & kAll);
    }
    const std::size_t shown = find(kMask) == 0 ? find(kGroup) : find(kMask);
    return (rights(find(kUser)) << 6) | (rights(shown) << 3) | rights(find(kOther));
  }

 private:
  static constexpr std::size_t kHeader = 4;
  static constexpr std::size_t kEntry = 8;
  static constexpr unsigned kAll = 7;
  enum Tag { kUser = 0x01, kGroup = 0x04, kMask = 0x10, kOther = 0x20 };

  /// The offset of the entry, or 0.
  std::size_t find(Tag tag) const {
    for (std::size_t at = kHeader; at + kEntry <= bytes_.size(); at += kEntry) {
      if (bytes_[at] == static_cast<char>(tag) && bytes_[at + 1] == 0) return at;
    }
    return 0;
  }
  unsigned rights(std::size_t at) const {
    return at == 0 ? 0 : static_cast<unsigned char>(bytes_[at + 2]) & kAll;
  }
  void setRights(std::size_t at, unsigned value) {
    if (at != 0) bytes_[at + 2] = static_cast<char>(value);
  }

  std::string bytes_;
};

mode_t cutMode(mode_t mode, const Kept& kept) {
  Classes rights{(mode >> 6) & 7, (mode >> 3) & 7, mode & 7};
  cut(rights, kept);
  return (rights.user << 6) | (rights.group << 3) | rights.other;
}

// What acts in another's name must not change whose it is.
mode_t specialBits(mode_t mode, const Kept& kept) {
  mode &= 07000;
  if (!kept.group) return 0;
  return kept.owner ? mode : mode & ~static_cast<mode_t>(S_ISUID);
}

void removeInheritedList(int file) {
  const auto remove = [&] { return ::fremovexattr(file, kAccessList); };
  if (uninterrupted(remove) == 0 || errno == ENODATA || isUnsupported(errno)) return;
  throw SystemError("cannot set an attribute of a temporary file", errno);
}

void copyAccess(const std::string& path, const struct stat& old, int to, mode_t allowed) {
  const Kept kept = copyOwner(old, to);
  mode_t mode = 0;
  if (auto bytes = readAttribute(path, kAccessList)) {
    AccessList list(std::move(*bytes));
    mode = list.limit(kept, allowed);
    setAttribute(to, kAccessList, list.bytes());
  } else {
    removeInheritedList(to);
    mode = cutMode(old.st_mode, kept) & allowed;
  }
  if (allowed == kAllRights) mode |= specialBits(old.st_mode, kept);
  if (uninterrupted([&] { return ::fchmod(to, mode); }) == 0) return;
  throw SystemError("cannot set the mode of a temporary file", errno);
}

}  // namespace

void copyPermissions(const std::string& path, const struct stat& old, int to) {
  // While it is ours, and may be written to.
  copyUserAttributes(path, to);
  copyAccess(path, old, to, kAllRights);
}

void copyWritePermissions(const std::string& path, const struct stat& old, int to) {
  copyAccess(path, old, to, kRightsToWrite);
}

}  // namespace opc
