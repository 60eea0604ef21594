// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Examiner.h"

#include <algorithm>
#include <utility>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/PackageRecord.h"
#include "addon/checks/AddonVerification.h"
#include "opc/Exception.h"
#include "opc/SystemPath.h"
#include "text/ByteCount.h"

namespace addon::catalogue::detail {

using checks::PackageVerdict;
using packaging::AddonPackage;

namespace {

/// Findings of one refused package that are kept.
constexpr std::size_t kMaxFindings = 100;

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

Refusal refusalOf(const std::string& file, std::string reason, PackageVerdict verdict) {
  verdict.file = file;
  verdict.findings.resize(std::min(verdict.findings.size(), kMaxFindings));
  return {std::move(reason), std::move(verdict)};
}

Examination Examiner::examine(const PackageSource& source) const noexcept {
  Examination result;
  try {
    look(source, result);
  } catch (...) {
    // Whatever it is, it ends the work when it is the turn of this package.
    result.failure = std::current_exception();
  }
  return result;
}

void Examiner::look(const PackageSource& source, Examination& result) const {
  result.isOfSite = source.isStored;
  result.file = source.isStored ? files_.onDisk(source.path) : source.path;
  bring(source, result);
  if (result.refusal || (result.stored->isStored() && isUnchanged(*result.stored))) return;
  const std::string path = result.stored->path();
  result.package = std::make_unique<AddonPackage>(opc::SystemPath{path});
  try {
    check(result);
  } catch (const opc::Exception& error) {
    result.refusal = refusalOf(result.file, messageOf(error, path, result.file));
  }
}

void Examiner::bring(const PackageSource& source, Examination& result) const {
  try {
    result.stored = std::make_unique<PackageFile>(files_, result.file, request_.stop);
  } catch (const opc::Exception& error) {
    if (source.isStored) throw;
    result.refusal = refusalOf(result.file, error.what());
    return;
  }
  if (source.isStored && result.stored->place() != source.path) {
    result.refusal = refusalOf(result.file, "it is not what its name says");
    return;
  }
  result.stored->bring(request_.isLinking && !source.isStored);
}

bool Examiner::isUnchanged(const PackageFile& stored) const {
  try {
    AddonPackage package(opc::SystemPath{stored.path()});
    open(package);
    Record record;
    readIdentity(package, record);
    return hashOf_({keyOf(record.guid), record.version}) == stored.sha256();
  } catch (const BrokenSite&) {
    throw;
  } catch (const opc::Exception&) {
    return false;  // The checks will say why.
  }
}

void Examiner::check(Examination& result) const {
  AddonPackage& package = *result.package;
  try {
    open(package);
  } catch (const opc::FormatError&) {
    // Its findings say more.
  }
  if (package.logicalPackage().isOpen()) {
    if (std::string why = whyTooLarge(package); !why.empty()) {
      result.refusal = refusalOf(result.file, std::move(why));
      return;
    }
  }
  opc::signatures::ItemDigests digests;
  if (verify(result, digests)) {
    result.record = describe(package, result.stored->sha256(), digests, request_.stop);
  }
}

bool Examiner::verify(Examination& result, opc::signatures::ItemDigests& digests) const {
  const auto stop = [&](const opc::interfaces::Progress&) {
    if (request_.stop) request_.stop();
  };
  opc::checks::SignatureDemands demands = request_.demands;
  demands.digests = &digests;
  const auto report =
      checks::verifyOpened(*result.package, result.stored->path(), stop, demands, starter_);
  PackageVerdict verdict = checks::judge(result.file, report, checks::FindingRules());
  if (verdict.isGood(false)) return true;
  std::string reason = "it has " + text::counted(verdict.errors, "error");
  result.refusal = refusalOf(result.file, std::move(reason), std::move(verdict));
  return false;
}

}  // namespace addon::catalogue::detail
