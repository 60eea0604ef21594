// SPDX-License-Identifier: MIT
#include "python/PackageHandle.h"

#include <cerrno>
#include <chrono>

#include "addon/build/BuildError.h"
#include "addon/build/NewPackage.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/Documents.h"
#include "addon/project/Guid.h"
#include "opc/Text.h"
#include "opc/plservices/LoadedFileTree.h"
#include "python/Progress.h"
#include "tool/process/Background.h"

namespace python {

namespace py = pybind11;

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using opc::interfaces::OpenMode;

// What a package is made with; a name is set later.
namespace {

AddonProperties newProperties() {
  AddonProperties properties;
  properties.type = u"Korvan Toolbox";
  properties.version = u"1.0";
  properties.GUID = opc::fromUtf8(addon::project::randomGuid());
  return properties;
}

}  // namespace

PackageHandle::Turn::Turn(PackageHandle& handle)
    : handle_(handle), lock_(handle.mutex_, std::defer_lock) {
  if (handle.isTurnOfThisThread()) return;
  lock_.lock();
  handle.owner_ = std::this_thread::get_id();
}

PackageHandle::Turn::~Turn() {
  if (lock_) handle_.owner_ = std::thread::id();
}

PackageHandle::Stream::Stream(std::shared_ptr<PackageHandle> package, std::string path)
    : package_(std::move(package)), path_(std::move(path)) {}

PackageHandle::Stream::~Stream() {
  const py::gil_scoped_release released;
  // A progress function may drop the stream.
  const Turn turn(*package_);
  package_->streams_.erase(this);
  input_.reset();
}

std::size_t PackageHandle::Stream::read(unsigned char* buffer, std::size_t size) {
  return package_->use(path_, [&](AddonPackage&) {
    std::size_t done = 0;
    while (done < size) {
      const std::size_t count = input_->read(buffer + done, size - done);
      if (count == 0) break;
      done += count;
    }
    return done;
  });
}

std::shared_ptr<PackageHandle::Stream> PackageHandle::openFile(const std::string& path) {
  auto stream = std::make_shared<Stream>(shared_from_this(), path);
  use(path, [&](AddonPackage& package) {
    streams_.insert(stream.get());
    stream->input_ = package.fileSystem().openFile(requireEntry(package, path));
  });
  return stream;
}

opc::plservices::FileSystemEntry PackageHandle::requireEntry(AddonPackage& package,
                                                             const std::string& path) {
  const auto entry = package.fileSystem().find(path);
  if (entry) return *entry;
  throw opc::Exception(
      opc::ErrorCode::NotFound,
      opc::sentence("cannot find", path, "the package has nothing with that name"));
}

void PackageHandle::openNew(bool replaces) {
  addon::build::NewPackage target(path_, {.any = replaces});
  AddonProperties properties = newProperties();
  target.open(properties, settings_.timestamp);
  package_ = target.release();
  isNew_ = true;
}

void PackageHandle::openExisting(bool isForChanging) {
  auto package = std::make_unique<AddonPackage>(opc::SystemPath{path_});
  // A command that is changing the package comes first.
  if (isForChanging) lockPackage(path_, kDefaultLockTimeout);
  package->logicalPackage().open(isForChanging ? OpenMode::Modify : OpenMode::Read);
  package_ = std::move(package);
}

std::shared_ptr<PackageHandle> PackageHandle::open(const std::string& path, char mode,
                                                   WriteSettings settings) {
  // make_shared cannot reach the constructor.
  std::shared_ptr<PackageHandle> handle(new PackageHandle(path, settings));
  handle->isReadOnly_ = mode == 'r';
  withoutGil({path}, [&] {
    if (path.empty()) throw addon::build::systemError("cannot open package", path, ENOENT);
    if (mode == 'x' || mode == 'w') {
      handle->openNew(mode == 'w');
    } else {
      handle->openExisting(mode == 'a');
    }
  });
  return handle;
}

void PackageHandle::requireOutside() const {
  if (isTurnOfThisThread()) throw std::runtime_error("a call of this thread is using the package");
}

void PackageHandle::requireOpen() const {
  if (isClosed_) throw py::value_error("I/O operation on closed package");
}

void PackageHandle::requireWritable() const {
  if (!isReadOnly_) return;
  throw opc::Exception(opc::ErrorCode::InvalidState, opc::sentence("cannot change package", path_,
                                                                   "it is open for reading only"));
}

void PackageHandle::drop() {
  for (Stream* stream : streams_) stream->input_.reset();
  streams_.clear();
  package_.reset();
  isClosed_ = true;
}

void PackageHandle::commit() {
  if (isReadOnly_) return;
  if (isHalfChanged_) {
    throw opc::Exception(opc::ErrorCode::InvalidState,
                         opc::sentence("cannot commit package", path_, "a change of it failed"));
  }
  opc::zippackage::WriteOptions options;
  options.timestamp = settings_.timestamp;
  options.level = settings_.level;
  options.counted = opc::plservices::kFilesFolder;
  options.background = tool::process::secondThread();
  options.progress = SignalCheck();
  const auto lock = lockPackage(path_, kDefaultLockTimeout);
  package_->physicalPackage().setWriteOptions(std::move(options));
  package_->logicalPackage().close(false);
}

void PackageHandle::close() {
  requireOutside();
  withoutGil({path_}, [&] {
    const Turn turn(*this);
    if (isClosed_) return;
    struct Drop {
      PackageHandle& handle;
      ~Drop() { handle.drop(); }
    } const drop{*this};
    commit();
  });
}

void PackageHandle::discard() {
  requireOutside();
  withoutGil({path_}, [&] {
    const Turn turn(*this);
    drop();
  });
}

}  // namespace python
