// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <span>
#include <vector>

#include "addon/build/BuildError.h"
#include "addon/build/ExistingFiles.h"
#include "addon/build/Selection.h"
#include "addon/comparison/OtherContent.h"
#include "opc/plservices/FileTree.h"
#include "python/Bindings.h"
#include "python/Progress.h"
#include "tool/process/Background.h"

namespace python {

namespace py = pybind11;

using addon::comparison::Item;
using addon::packaging::AddonPackage;
using opc::plservices::FileSystemEntry;
using opc::plservices::FileTree;
using opc::plservices::NodeId;
using opc::plservices::RestoreMode;
using Stream = PackageHandle::Stream;

namespace {

py::str textOf(std::string_view utf8) {
  return py::reinterpret_steal<py::str>(
      PyUnicode_DecodeUTF8(utf8.data(), static_cast<py::ssize_t>(utf8.size()), "replace"));
}

/// The paths of all files and empty folders, which end with a slash.
py::list names(PackageHandle& handle) {
  py::list paths;
  handle.use("", [&](AddonPackage& package) {
    FileTree& tree = package.fileSystem().nodes();
    opc::plservices::TreeWalk walk(tree);
    const py::gil_scoped_acquire acquired;
    while (walk.next()) {
      if (tree.isFile(walk.node())) {
        paths.append(textOf(walk.path()));
      } else {
        paths.append(textOf(std::string(walk.path()) + '/'));
      }
    }
  });
  return paths;
}

std::size_t count(PackageHandle& handle) {
  return handle.use("", [](AddonPackage& package) {
    std::size_t count = 0;
    opc::plservices::TreeWalk walk(package.fileSystem().nodes());
    while (walk.next()) ++count;
    return count;
  });
}

/// The names in a folder, those of folders with a slash. Raises for anything else.
py::str children(PackageHandle& handle, const std::string& path) {
  const std::string all = handle.use(path, [&](AddonPackage& package) {
    const FileSystemEntry entry = PackageHandle::requireEntry(package, path);
    if (entry.isFile()) throw opc::SystemError("cannot list '" + path + "'", ENOTDIR);
    std::string joined;
    FileTree& tree = package.fileSystem().nodes();
    for (NodeId node = tree.firstChild(entry.node()); node != FileTree::kNone;
         node = tree.nextSibling(node)) {
      if (!joined.empty()) joined += '\0';
      joined += tree.name(node);
      if (!tree.isFile(node)) joined += '/';
    }
    return joined;
  });
  return textOf(all);
}

/// What is known of a file or folder without reading it.
struct Status {
  bool isFile;
  opc::model::PartInfo info;

  explicit Status(const FileSystemEntry& entry) : isFile(entry.isFile()), info(entry.info()) {}

  /// Whether it is a file, its size, time (seconds since 1970), executable bit and checksum.
  py::tuple values() const {
    return py::make_tuple(isFile, info.size, info.modified, info.executable, info.crc);
  }
};

/// None for what is not there.
py::object find(PackageHandle& handle, const std::string& path) {
  const auto status = handle.use(path, [&](AddonPackage& package) {
    const auto entry = package.fileSystem().find(path);
    return entry == nullptr ? std::nullopt : std::optional<Status>(*entry);
  });
  return status ? py::object(status->values()) : py::none();
}

py::tuple require(PackageHandle& handle, const std::string& path) {
  return handle
      .use(
          path,
          [&](AddonPackage& package) { return Status(PackageHandle::requireEntry(package, path)); })
      .values();
}

/// A file that is about to be read. Throws for a folder and for what is not there.
class FileToRead {
 public:
  FileToRead(AddonPackage& package, const std::string& path)
      : model_(package.logicalPackage()), path_(path) {
    const FileSystemEntry entry = PackageHandle::requireEntry(package, path);
    if (!entry.isFile()) throw opc::SystemError("cannot read '" + path + "'", EISDIR);
    part_ = package.fileSystem().nodes().part(entry.node());
    const opc::model::PartInfo info = model_.partInfo(part_);
    size_ = info.size;
    isPlausible_ = info.size / kMaxRatio <= info.packedSize;
  }

  /// Throws instead of returning a size that is only declared, and may be allocated by nobody.
  std::size_t size() const {
    if (!isPlausible_) read([&] { opc::StreamHelper::readToEnd(*model_.openPart(part_)); });
    return static_cast<std::size_t>(size_);
  }

  void readInto(opc::ByteBuffer& content) const {
    read([&] { model_.readPart(part_, content, size_); });
  }

 private:
  /// Deflate gets no smaller than this.
  static constexpr std::uint64_t kMaxRatio = 1032;

  template <typename Work>
  void read(const Work& work) const {
    opc::inContext([&] { return "cannot read '" + path_ + "'"; }, work);
  }

  opc::model::Package& model_;
  const std::string& path_;
  opc::model::PartId part_ = 0;
  std::uint64_t size_ = 0;
  bool isPlausible_ = true;
};

py::bytes newBytes(const void* content, std::size_t size) {
  PyObject* const bytes =
      PyBytes_FromStringAndSize(static_cast<const char*>(content), static_cast<py::ssize_t>(size));
  if (bytes == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::bytes>(bytes);
}

py::bytes read(PackageHandle& handle, const std::string& path) {
  py::bytes result;
  handle.use(path, [&](AddonPackage& package) {
    const FileToRead file(package, path);
    const std::size_t size = file.size();
    unsigned char* memory = nullptr;
    {
      const py::gil_scoped_acquire acquired;
      result = newBytes(nullptr, size);
      // Not the macro: with it, the compiler warns of freeing what the buffer does not free.
      memory = reinterpret_cast<unsigned char*>(PyBytes_AsString(result.ptr()));
    }
    opc::ByteBuffer content({memory, size});
    file.readInto(content);
    if (content.data() == memory && content.size() == size) return;
    const py::gil_scoped_acquire acquired;
    result = newBytes(content.data(), content.size());
  });
  return result;
}

/// The memory of a buffer, which has to outlive it.
std::span<unsigned char> writableBytes(const py::buffer_info& buffer) {
  if (PyBuffer_IsContiguous(buffer.view(), 'C') == 0) {
    throw py::value_error("the buffer is not contiguous");
  }
  return {static_cast<unsigned char*>(buffer.ptr),
          static_cast<std::size_t>(buffer.size * buffer.itemsize)};
}

std::size_t readInto(PackageHandle& handle, const std::string& path, const py::buffer& target) {
  const py::buffer_info buffer = target.request(true);
  const std::span<unsigned char> room = writableBytes(buffer);
  return handle.use(path, [&](AddonPackage& package) {
    const FileToRead file(package, path);
    const std::size_t size = file.size();
    if (size > room.size()) {
      throw py::value_error("the buffer has " + std::to_string(room.size()) +
                            " bytes, the file has " + std::to_string(size));
    }
    opc::ByteBuffer content(room);
    file.readInto(content);
    if (content.data() != room.data()) {
      std::copy_n(content.data(), content.size(), room.data());
    }
    return content.size();
  });
}

/// What is at `path` or below it; "" is the root.
void extract(PackageHandle& handle, const std::string& path, const std::string& destination,
             bool overwrites, const py::object& progress) {
  const auto function = progressFunction(progress);
  handle.use(path, [&](AddonPackage& package) {
    if (!addon::comparison::isAddon(package)) {
      throw addon::build::BuildError(
          opc::sentence("cannot extract", handle.path(), "it is not an add-on"));
    }
    const FileSystemEntry top = PackageHandle::requireEntry(package, path);
    std::vector<Item> items = addon::comparison::readTree(package);
    if (!path.empty()) items = addon::build::choose(std::move(items), {path}, false);
    const auto existing = addon::build::findExisting(items, destination).files;
    if (overwrites) {
      refuseThePackageItself(existing, items, destination, handle.path());
    } else {
      refuseExisting(existing, items, destination);
    }
    const RestoreMode mode = overwrites ? RestoreMode::ReplaceExisting : RestoreMode::KeepExisting;
    package.fileSystem().setBackground(tool::process::secondThread());
    package.fileSystem().extract({top}, destination, mode, function);
  });
}

std::size_t readStream(Stream& stream, const py::buffer& target) {
  const py::buffer_info buffer = target.request(true);
  const std::span<unsigned char> room = writableBytes(buffer);
  return stream.read(room.data(), room.size());
}

}  // namespace

void bindFiles(py::module_& module, PackageClass& package) {
  py::class_<Stream, std::shared_ptr<Stream>>(module, "Stream", plainType())
      .def("readinto", readStream);
  package.def("names", names)
      .def("count", count)
      .def("children", children)
      .def("status", find)
      .def("require", require)
      .def("read", read)
      .def("readinto", readInto)
      .def("open", &PackageHandle::openFile)
      .def("extract",
           [](PackageHandle& handle, const std::string& path, const py::bytes& to, bool overwrites,
              const py::object& progress) { extract(handle, path, to, overwrites, progress); });
}

}  // namespace python
