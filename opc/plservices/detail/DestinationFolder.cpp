// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/DestinationFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "opc/Exception.h"
#include "opc/OpenFolder.h"
#include "opc/SystemCall.h"

namespace opc::plservices::detail {
namespace {

// Returns false also if that cannot be determined.
bool isEmptyFolder(const std::string& path) {
  OpenFolder folder(AT_FDCWD, path);
  return folder && folder.next() == nullptr && errno == 0;
}

}  // namespace

DestinationFolder::DestinationFolder(std::string path) : path_(std::move(path)) {
  if (path_.find('\0') != std::string::npos) {
    throw Exception(ErrorCode::InvalidArgument,
                    "cannot open folder '" + path_ + "': it holds a NUL");
  }
  try {
    make();
    open();
  } catch (...) {
    undo();
    throw;
  }
  fresh_ = !made_.empty() || isEmptyFolder(path_);
}

void DestinationFolder::make() {
  if (makeOne(path_)) return;
  for (auto slash = path_.find('/', 1); slash != std::string::npos;
       slash = path_.find('/', slash + 1)) {
    const std::string above = path_.substr(0, slash);
    if (!makeOne(above)) throw SystemError("cannot make folder '" + above + "'", errno);
  }
  if (!makeOne(path_)) throw SystemError("cannot make folder '" + path_ + "'", errno);
}

// Whether the name is taken now, by a folder or something else; errno says why not.
bool DestinationFolder::makeOne(const std::string& path) {
  made_.push_back(path);
  if (uninterrupted([&] { return ::mkdir(path.c_str(), 0777); }) == 0) return true;
  made_.pop_back();
  return errno == EEXIST;
}

void DestinationFolder::open() {
  folder_.reset(
      uninterrupted([&] { return ::open(path_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
  if (!folder_) throw SystemError("cannot open folder '" + path_ + "'", errno);
}

void DestinationFolder::undo() noexcept {
  for (auto path = made_.rbegin(); path != made_.rend(); ++path) ::rmdir(path->c_str());
}

}  // namespace opc::plservices::detail
