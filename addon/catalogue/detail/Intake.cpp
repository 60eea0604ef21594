// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Intake.h"

#include <fmt/format.h>

#include <algorithm>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/PackageRecord.h"
#include "addon/catalogue/detail/Pages.h"
#include "addon/checks/AddonVerification.h"
#include "opc/SystemPath.h"
#include "text/ByteCount.h"

namespace addon::catalogue::detail {

using checks::PackageVerdict;
using packaging::AddonPackage;

namespace {

/// Findings of one refused package that are kept.
constexpr std::size_t kMostFindings = 100;

void open(AddonPackage& package) {
  package.logicalPackage().open(opc::interfaces::OpenMode::Read);
}

/// The message with the path that the user gave, not that of a copy.
std::string messageOf(const opc::Exception& error, const std::string& path,
                      const std::string& file) {
  std::string message = error.what();
  if (const std::size_t found = message.find(path); found != std::string::npos) {
    message.replace(found, path.size(), file);
  }
  return message;
}

}  // namespace

Intake::Intake(const UpdateRequest& request, SiteFiles& files, const SiteState& old,
               std::uint64_t sequence)
    : request_(request), files_(files), old_(old), sequence_(sequence), spool_(files.folder()) {}

void Intake::refuse(const std::string& path, std::string reason, PackageVerdict verdict) {
  verdict.file = path;
  verdict.findings.resize(std::min(verdict.findings.size(), kMostFindings));
  refused_.push_back({std::move(reason), std::move(verdict)});
}

void Intake::add(const std::string& path) {
  std::optional<PackageFile> package;
  try {
    package.emplace(files_, path, request_.stop);
  } catch (const opc::Exception& error) {
    return refuse(path, error.what());
  }
  package->bring(request_.isLinking);
  addPackage(path, *package);
}

void Intake::addStored(const std::string& path) {
  PackageFile package(files_, files_.onDisk(path), request_.stop);
  if (package.place() != path) {
    return refuse(files_.onDisk(path), "it is not what its name says");
  }
  package.bring(false);
  addPackage(files_.onDisk(path), package);
}

void Intake::addPackage(const std::string& file, PackageFile& stored) {
  if (stored.isStored() && isUnchanged(stored)) return;
  const std::string path = stored.path();
  AddonPackage package(opc::SystemPath{path});
  std::optional<Record> record = examine(file, stored.sha256(), package, path);
  if (!record) return;
  const VersionKey name{keyOf(record->guid), record->version};
  if (!isAlone(file, name, *record)) return;
  stored.putInPlace();
  take(file, name, *record, package);
}

bool Intake::isUnchanged(const PackageFile& stored) const {
  try {
    AddonPackage package(opc::SystemPath{stored.path()});
    open(package);
    Record record;
    readIdentity(package, record);
    const auto old = oldRecord({keyOf(record.guid), record.version});
    return old && old->sha256 == stored.sha256();
  } catch (const BrokenSite&) {
    throw;
  } catch (const opc::Exception&) {
    return false;  // The checks will say why.
  }
}

std::optional<Record> Intake::examine(const std::string& file, const std::string& sha256,
                                      AddonPackage& package, const std::string& path) {
  try {
    try {
      open(package);
    } catch (const opc::FormatError&) {
      // Its findings say more.
    }
    if (package.logicalPackage().isOpen()) {
      if (std::string why = whyTooLarge(package); !why.empty()) {
        refuse(file, std::move(why));
        return std::nullopt;
      }
    }
    if (!verify(file, path)) return std::nullopt;
    return describe(package, sha256, request_.stop);
  } catch (const opc::Exception& error) {
    refuse(file, messageOf(error, path, file));
    return std::nullopt;
  }
}

bool Intake::verify(const std::string& file, const std::string& path) {
  const auto stop = [&](const opc::interfaces::Progress&) {
    if (request_.stop) request_.stop();
  };
  const auto report = checks::verifyAddon(path, stop, request_.demands, request_.starter);
  PackageVerdict verdict = checks::judge(file, report, checks::FindingRules());
  if (verdict.isGood(false)) return true;
  std::string reason = "it has " + text::counted(verdict.errors, "error");
  refuse(file, std::move(reason), std::move(verdict));
  return false;
}

std::optional<Record> Intake::oldRecord(const VersionKey& name) const {
  if (gone.contains(name)) return std::nullopt;
  for (Record& record : old_.records(name.key)) {
    if (record.version == name.version) return std::move(record);
  }
  return std::nullopt;
}

bool Intake::isAlone(const std::string& file, const VersionKey& name, const Record& record) {
  const std::string title = fmt::format("version {} of '{}'", record.version, record.name);
  if (const auto old = oldRecord(name)) {
    if (old->sha256 == record.sha256) return false;  // It is the same.
    refuse(file, fmt::format("the site has another package with {}", title));
    return false;
  }
  const auto found = candidates_.find(name);
  if (found == candidates_.end()) return true;
  if (found->second.sha256 == record.sha256) return false;
  found->second.isDoubtful = true;
  refuse(file, fmt::format("'{}' has {}, too", found->second.file, title));
  return false;
}

void Intake::take(const std::string& file, const VersionKey& name, Record& record,
                  AddonPackage& package) {
  record.isYanked = yanked.contains(name);
  writeScreenshot(files_, package, record);
  Candidate candidate{file, record.sha256};
  // A page that the old root names belongs to its package until the new root is in place.
  candidate.isPageMissing =
      gone.contains(name) && files_.exists(record.page) && !isPageOf(files_, record);
  if (!candidate.isPageMissing) writePage(files_, package, record, sequence_);
  candidate.line = spool_.add(toLine(record));
  candidates_.emplace(name, std::move(candidate));
}

void Intake::finish() {
  for (auto each = candidates_.begin(); each != candidates_.end();) {
    if (!each->second.isDoubtful) {
      ++each;
      continue;
    }
    const Record record = parseRecord(spool_.line(each->second.line));
    refuse(each->second.file,
           fmt::format("another package has version {} of '{}', too", record.version, record.name));
    each = candidates_.erase(each);
  }
  std::sort(refused_.begin(), refused_.end(),
            [](const Refusal& a, const Refusal& b) { return a.verdict.file < b.verdict.file; });
}

}  // namespace addon::catalogue::detail
