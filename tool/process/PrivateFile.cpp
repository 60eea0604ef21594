// SPDX-License-Identifier: MIT
#include "tool/process/PrivateFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"

namespace tool::process {

namespace {

std::string temporaryFolder() {
  const char* folder = std::getenv("TMPDIR");
  return folder == nullptr || *folder == '\0' ? "/tmp" : folder;
}

}  // namespace

PrivateFile::PrivateFile(const std::string& name) {
  Interrupt::defer();
  const std::string parent = temporaryFolder();
  folder_ = parent + "/kraddon-XXXXXX";
  path_ = folder_ + "/" + name;
  if (::mkdtemp(folder_.data()) == nullptr) {
    throw systemFailure("cannot create a folder in", parent, errno);
  }
  path_.replace(0, folder_.size(), folder_);  // as long as before: takes no memory
}

PrivateFile::~PrivateFile() {
  ::unlink(path_.c_str());
  ::rmdir(folder_.c_str());
}

}  // namespace tool::process
