// SPDX-License-Identifier: MIT
#include "opc/plservices/DestinationFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>

#include "opc/Exception.h"
#include "opc/SystemCall.h"

namespace opc::plservices {
namespace {

struct ListingDeleter {
  void operator()(DIR* listing) const { ::closedir(listing); }
};

// False also when nobody can tell.
bool isEmptyFolder(const std::string& path) {
  const std::unique_ptr<DIR, ListingDeleter> listing(::opendir(path.c_str()));
  if (!listing) return false;
  for (;;) {
    errno = 0;
    const struct dirent* entry = ::readdir(listing.get());
    if (entry == nullptr) return errno == 0;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") return false;
  }
}

}  // namespace

DestinationFolder::DestinationFolder(std::string path) : path_(std::move(path)) {
  if (path_.find('\0') != std::string::npos) {
    throw Exception(ErrorCode::InvalidArgument,
                    "cannot open folder '" + path_ + "': it holds a NUL");
  }
  made_ = uninterrupted([&] { return ::mkdir(path_.c_str(), 0777); }) == 0;
  if (!made_ && errno != EEXIST) throw SystemError("cannot make folder '" + path_ + "'", errno);
  open();
  fresh_ = made_ || isEmptyFolder(path_);
}

void DestinationFolder::open() {
  folder_.reset(
      uninterrupted([&] { return ::open(path_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
  if (folder_) return;
  const int number = errno;
  undo();
  throw SystemError("cannot open folder '" + path_ + "'", number);
}

void DestinationFolder::undo() noexcept {
  if (made_) ::rmdir(path_.c_str());
}

}  // namespace opc::plservices
