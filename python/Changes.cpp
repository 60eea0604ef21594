// SPDX-License-Identifier: MIT
#include <utility>

#include "addon/build/SourceFiles.h"
#include "addon/packaging/ReferenceRenaming.h"
#include "opc/interfaces/MemoryContentSource.h"
#include "opc/plservices/FileContentSource.h"
#include "python/Bindings.h"
#include "python/Progress.h"

namespace python {

namespace py = pybind11;

using addon::packaging::AddonPackage;
using opc::interfaces::IContentSource;
using opc::model::StandardPartInfo;
using opc::plservices::FileContentSource;
using opc::plservices::FileSystemEntry;

namespace {

/// Adds the content, or replaces that of an existing file.
void store(AddonPackage& package, std::unique_ptr<IContentSource> source,
           const StandardPartInfo& info, const std::string& path, bool replaces) {
  auto& tree = package.fileSystem();
  const auto existing = tree.find(path);
  if (replaces && existing != nullptr && existing->isFile()) {
    tree.replaceFile(*existing, std::move(source), info);
  } else {
    tree.addFile(std::move(source), info, path);
  }
}

void add(PackageHandle& handle, const std::string& source, const std::string& path, bool replaces) {
  std::unique_ptr<FileContentSource> file;
  withoutGil({source, path}, [&] { file = std::make_unique<FileContentSource>(source); });
  StandardPartInfo info(opc::interfaces::CompressionType::Normal, file->size());
  info.modified = file->modified();
  info.executable = file->executable();
  handle.use(path,
             [&](AddonPackage& package) { store(package, std::move(file), info, path, replaces); });
}

void addBytes(PackageHandle& handle, std::string data, const std::string& path, bool replaces) {
  const StandardPartInfo info(opc::interfaces::CompressionType::Normal, data.size());
  auto content =
      std::make_unique<opc::interfaces::MemoryContentSource>(std::move(data), "'" + path + "'");
  handle.use(path, [&](AddonPackage& package) {
    store(package, std::move(content), info, path, replaces);
  });
}

void addFolder(PackageHandle& handle, const std::string& source, const std::string& into) {
  addon::build::SourceChoice choice;
  choice.package = handle.path();
  choice.stop = SignalCheck();
  std::vector<addon::build::SourceFile> files;
  withoutGil({source}, [&] { files = addon::build::sourcesBelow(source, into, choice); });
  handle.change(into, [&](AddonPackage& package) {
    addon::build::storeFiles(files, false, package, choice.stop);
  });
}

void makeFolder(PackageHandle& handle, const std::string& path) {
  handle.use(path, [&](AddonPackage& package) { addon::build::storeFolder(path, package); });
}

void remove(PackageHandle& handle, const std::string& path) {
  handle.use(path, [&](AddonPackage& package) {
    package.fileSystem().remove(handle.requireEntry(package, path));
  });
}

void move(PackageHandle& handle, const std::string& from, const std::string& to) {
  handle.use(from, [&](AddonPackage& package) {
    auto& tree = package.fileSystem();
    handle.requireEntry(package, from);
    if (tree.find(to) != nullptr) throw opc::plservices::FileSystemEntryAlreadyExists(to);
  });
  handle.change(from, [&](AddonPackage& package) {
    const FileSystemEntry entry = handle.requireEntry(package, from);
    const std::string old = entry.path();
    package.fileSystem().move(entry, to);
    addon::packaging::renameReferences(package, old, to);
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
