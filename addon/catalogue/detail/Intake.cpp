// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Intake.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/Pages.h"
#include "opc/interfaces/WorkAhead.h"

namespace addon::catalogue::detail {

namespace {

/// One by one, and few ahead: each has open files, and its directory in memory.
constexpr opc::interfaces::BatchLimits kLimits{.jobs = 1, .effort = 1, .batches = 6, .ahead = 6};

}  // namespace

Intake::Intake(const UpdateRequest& request, SiteFiles& files, const SiteState& old,
               std::uint64_t sequence, Versions gone, Versions yanked)
    : request_(request),
      files_(files),
      old_(old),
      sequence_(sequence),
      gone_(std::move(gone)),
      yanked_(std::move(yanked)),
      spool_(files.folder()) {}

void Intake::add(const std::vector<PackageSource>& sources, const std::function<void()>& onEach) {
  const bool isSingle = sources.size() == 1;
  const Examiner examiner(
      request_, files_, [this](const VersionKey& name) { return hashOf(name); },
      isSingle ? request_.starter : nullptr);
  using Examinations = std::vector<Examination>;
  opc::interfaces::WorkAhead<Examinations> ahead(
      sources.size(), kLimits, [](std::size_t) { return 1; },
      [&] {
        return [&](std::size_t i, Examinations& results) {
          results.push_back(examiner.examine(sources[i]));
        };
      },
      request_.starter);
  for (std::size_t i = 0; i < sources.size(); ++i) {
    onEach();
    const auto [results, at] = ahead.take();
    addExamined(results[at]);
  }
  finish();
}

void Intake::addExamined(Examination& examined) {
  if (examined.failure) std::rethrow_exception(examined.failure);
  if (examined.refusal) refused_.push_back(*std::move(examined.refusal));
  if (!examined.record) return;
  const VersionKey name{keyOf(examined.record->guid), examined.record->version};
  if (!isAlone(examined.file, name, *examined.record)) return;
  examined.stored->putInPlace();
  take(examined, name);
}

void Intake::refuse(const std::string& file, std::string reason) {
  refused_.push_back(refusalOf(file, std::move(reason)));
}

std::string Intake::hashOf(const VersionKey& name) {
  if (gone_.contains(name)) return {};
  const std::lock_guard lock(mutex_);
  for (Record& record : old_.records(name.key)) {
    if (record.version == name.version) return std::move(record.sha256);
  }
  return {};
}

bool Intake::isAlone(const std::string& file, const VersionKey& name, const Record& record) {
  const std::string title = fmt::format("version {} of '{}'", record.version, record.name);
  if (const std::string old = hashOf(name); !old.empty()) {
    if (old == record.sha256) return false;  // It is the same.
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

void Intake::take(Examination& examined, const VersionKey& name) {
  Record& record = *examined.record;
  record.isYanked = yanked_.contains(name);
  writeScreenshot(files_, *examined.package, record);
  Candidate candidate{examined.file, record.sha256};
  // A page that the old root names belongs to its package until the new root is in place.
  candidate.isPageMissing =
      gone_.contains(name) && files_.exists(record.page) && !isPageOf(files_, record);
  if (!candidate.isPageMissing) writePage(files_, *examined.package, record, sequence_);
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
