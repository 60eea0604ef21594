// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "addon/build/BuildError.h"
#include "addon/build/SourceFiles.h"
#include "addon/packaging/ReferenceRenaming.h"
#include "opc/FileIdentity.h"
#include "opc/plservices/FileContentSource.h"
#include "python/Bindings.h"
#include "python/Progress.h"

namespace python {

namespace py = pybind11;

using addon::build::BuildError;
using addon::packaging::AddonPackage;
using opc::plservices::FileContentSource;
using opc::plservices::FileSystemEntry;

namespace {

/// The kind of something that is to be added. Throws BuildError if there is nothing.
mode_t kindOf(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) throw addon::build::systemError("cannot add", path, errno);
  return info.st_mode & S_IFMT;
}

std::unique_ptr<FileContentSource> openSource(const std::string& path, const std::string& package) {
  const auto refuse = [&](const char* why, int number = 0) {
    throw BuildError(opc::sentence("cannot add", path, why), {}, number);
  };
  const mode_t kind = kindOf(path);
  if (kind == S_IFDIR) refuse("it is a folder", EISDIR);
  if (kind != S_IFREG) refuse("it is neither a file nor a folder");
  if (opc::identityOf(path) == opc::identityOf(package)) refuse("it is the package itself");
  return std::make_unique<FileContentSource>(path);
}

void add(PackageHandle& handle, const std::string& source, const std::string& path, bool replaces) {
  auto content = withoutGil({source, path}, [&] { return openSource(source, handle.path()); });
  handle.use(path, [&](AddonPackage& package) {
    addon::build::storeContent(std::move(content), path, replaces, package);
  });
}

void addBytes(PackageHandle& handle, std::string data, const std::string& path, bool replaces) {
  handle.use(path, [&](AddonPackage& package) {
    addon::build::storeContent(std::move(data), path, replaces, package);
  });
}

void addFolder(PackageHandle& handle, const std::string& source, const std::string& into) {
  addon::build::SourceChoice choice;
  choice.package = handle.path();
  choice.stop = SignalCheck();
  const auto files = withoutGil({source}, [&] {
    kindOf(source);
    return addon::build::sourcesBelow(source, into, choice);
  });
  handle.change(into, [&](AddonPackage& package) {
    addon::build::storeFiles(files, false, package, choice.stop);
  });
}

void makeFolder(PackageHandle& handle, const std::string& path) {
  handle.use(path, [&](AddonPackage& package) { addon::build::storeFolder(path, package); });
}

void remove(PackageHandle& handle, const std::string& path) {
  handle.use(path, [&](AddonPackage& package) {
    package.fileSystem().remove(PackageHandle::requireEntry(package, path));
  });
}

void move(PackageHandle& handle, const std::string& from, const std::string& to) {
  Subject subject{handle.path(), from};
  handle.use(subject, [&](AddonPackage& package) {
    auto& tree = package.fileSystem();
    const FileSystemEntry entry = PackageHandle::requireEntry(package, from);
    subject.part = to;
    if (tree.find(to)) throw opc::plservices::FileSystemEntryAlreadyExists(to);
    subject.part = from;
    tree.checkMove(entry, to);
    const std::string old = entry.path();
    handle.changeForGood([&] {
      tree.move(entry, to);
      addon::packaging::renameReferences(package, old, to);
    });
  });
}

}  // namespace

void bindChanges(PackageClass& package) {
  package
      .def("add", [](PackageHandle& handle, const py::bytes& source, const std::string& path,
                     bool replaces) { add(handle, source, path, replaces); })
      .def("add_bytes", [](PackageHandle& handle, const py::bytes& data, const std::string& path,
                           bool replaces) { addBytes(handle, data, path, replaces); })
      .def("add_folder", [](PackageHandle& handle, const py::bytes& source,
                            const std::string& into) { addFolder(handle, source, into); })
      .def("mkdir", makeFolder)
      .def("remove", remove)
      .def("move", move);
}

}  // namespace python
