// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/PackageState.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/zippackage/ErrorContext.h"
#include "opc/zippackage/detail/ZipCommit.h"

namespace opc::zippackage {

using interfaces::ItemIndex;
using interfaces::OpenMode;

namespace {

std::string systemPath(const std::u16string& path) {
  std::string bytes = toUtf8(path);
  if (bytes.empty()) throw Exception(ErrorCode::InvalidArgument, "the path is empty");
  if (bytes.find('\0') != std::string::npos) {
    throw Exception(ErrorCode::InvalidArgument, "the path holds a NUL");
  }
  return bytes;
}

// A folder, or a device, cannot be replaced by a file; a file only with leave.
void requireFreePlace(const std::string& path, bool replaceExisting) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return;
    throw SystemError("cannot look at it", errno);
  }
  if (S_ISDIR(status.st_mode)) throw Exception(ErrorCode::AlreadyExists, "it is a folder");
  if (!replaceExisting) throw Exception(ErrorCode::AlreadyExists, "it exists already");
  if (!S_ISREG(status.st_mode)) {
    throw Exception(ErrorCode::AlreadyExists, "it is not a regular file");
  }
}

void requireItemName(const std::string& name) {
  const auto isWritable = [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\0'; };
  const char* why = nullptr;
  if (name.empty()) {
    why = "it is empty";
  } else if (name.size() > detail::kMaxNameLength) {
    why = "it is too long";
  } else if (!std::all_of(name.begin(), name.end(), isWritable)) {
    why = "it holds a NUL or a character that is not ASCII";
  }
  if (why == nullptr) return;
  constexpr std::size_t kShown = 200;
  throw Exception(ErrorCode::InvalidName,
                  "cannot add item '" + name.substr(0, kShown) + "': " + why);
}

}  // namespace

bool ZipPhysicalPackage::State::Session::isChanged() const {
  return std::any_of(removed.begin(), removed.end(), [](bool is) { return is; }) ||
         std::any_of(added.begin(), added.end(),
                     [](const detail::AddedItem& i) { return !i.isRemoved; });
}

std::string ZipPhysicalPackage::State::Session::nameOf(ItemIndex item) const {
  return item < oldCount() ? std::string(old->directory.name(item))
                           : added[item - oldCount()].properties.name;
}

ZipPhysicalPackage::State::State(const std::u16string& pathGiven, bool mayReplace,
                                 const std::u16string& folder)
    : givenPath(pathGiven),
      temporaryFolder(folder),
      path(toUtf8ForDisplay(pathGiven)),
      replaceExisting(mayReplace) {}

void ZipPhysicalPackage::State::open(OpenMode mode) {
  if (current) throw Exception(ErrorCode::InvalidState, "package '" + path + "' is open already");
  current = mode == OpenMode::Create ? openNew() : openExisting(mode);
}

std::unique_ptr<ZipPhysicalPackage::State::Session> ZipPhysicalPackage::State::openExisting(
    OpenMode mode) {
  auto session = std::make_unique<Session>();
  session->mode = mode;
  const auto context = [this] { return "cannot open package '" + path + "'"; };
  session->path = inContext(context, [&] { return systemPath(givenPath); });
  PackageFile file(session->path);
  inContext(context, [&] {
    session->old = std::make_unique<detail::OpenedPackage>(std::move(file));
    session->old->directory.refuseFaults();
    session->removed.resize(session->old->directory.entries().size());
    if (mode != OpenMode::Modify) return;
    prepareForWriting(*session);
    session->target->requireWritableFile();
  });
  return session;
}

std::unique_ptr<ZipPhysicalPackage::State::Session> ZipPhysicalPackage::State::openNew() {
  auto session = std::make_unique<Session>();
  session->mode = OpenMode::Create;
  const auto context = [this] { return "cannot create package '" + path + "'"; };
  inContext(context, [&] {
    session->path = systemPath(givenPath);
    requireFreePlace(session->path, replaceExisting);
    prepareForWriting(*session);
  });
  return session;
}

void ZipPhysicalPackage::State::prepareForWriting(Session& session) {
  session.target = detail::PackageTarget::resolve(session.path);
  session.target->requireWritableFolder();
  const std::string folder = toUtf8(temporaryFolder);
  session.store =
      std::make_unique<detail::PendingStore>(folder.empty() ? session.target->folder : folder);
}

void ZipPhysicalPackage::State::commit() {
  Session& writing = session();
  if (writing.mode == OpenMode::Read) return current.reset();
  if (writing.mode == OpenMode::Modify && !writing.isChanged()) return current.reset();
  const bool mayReplace = writing.mode == OpenMode::Modify || replaceExisting;
  detail::PackageContent content(writing.old.get(), writing.removed, writing.added, options);
  detail::ZipCommit commit(writing.path, *writing.target,
                           writing.old ? &writing.old->file : nullptr);
  commit.run(
      mayReplace, [&](detail::OutputFile& out) { content.writeTo(out); }, options.inspect,
      [&] { current.reset(); });
}

ZipPhysicalPackage::State::Session& ZipPhysicalPackage::State::session() const {
  if (!current) throw Exception(ErrorCode::InvalidState, "package '" + path + "' is not open");
  return *current;
}

ZipPhysicalPackage::State::Session& ZipPhysicalPackage::State::writableSession() const {
  if (session().mode != OpenMode::Read) return *current;
  throw Exception(ErrorCode::InvalidState, "package '" + path + "' is open for reading only");
}

void ZipPhysicalPackage::State::requireItem(ItemIndex item) const {
  const Session& open = session();
  if (item >= open.oldCount() + open.added.size()) {
    throw Exception(ErrorCode::InvalidArgument,
                    "package '" + path + "' has no item of number " + std::to_string(item));
  }
  const bool isRemoved =
      item < open.oldCount() ? open.removed[item] : open.added[item - open.oldCount()].isRemoved;
  if (!isRemoved) return;
  throw Exception(ErrorCode::NotFound,
                  "item '" + open.nameOf(item) + "' was removed from '" + path + "'");
}

ItemIndex ZipPhysicalPackage::State::add(const interfaces::NewItem& properties,
                                         std::unique_ptr<interfaces::IContentSource> source) {
  Session& open = writableSession();
  requireItemName(properties.name);
  detail::AddedItem item{properties, std::move(source)};
  if (!item.content) {
    auto pending = std::make_unique<detail::PendingContent>(*open.store, properties.name);
    item.pending = pending.get();
    item.content = std::move(pending);
  }
  open.added.push_back(std::move(item));
  return open.oldCount() + open.added.size() - 1;
}

}  // namespace opc::zippackage
