// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Intake.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <tuple>
#include <utility>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/Pages.h"
#include "opc/interfaces/WorkAhead.h"

namespace addon::catalogue::detail {

namespace {

/// One by one, and few ahead: each has open files, and its directory in memory.
constexpr opc::interfaces::BatchLimits kLimits{.jobs = 1, .effort = 1, .batches = 6, .ahead = 6};

std::string titleOf(const Record& record) {
  return fmt::format("version {} of '{}'", record.version, record.name);
}

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
  if (!isAlone(examined, name)) return;
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

bool Intake::isAlone(const Examination& examined, const VersionKey& name) {
  const Record& record = *examined.record;
  if (const std::string old = hashOf(name); !old.empty()) {
    if (old == record.sha256) return false;  // It is the same.
    refuse(examined.file, "the site has another package with " + titleOf(record));
    return false;
  }
  const auto found = candidates_.find(name);
  if (found == candidates_.end()) return true;
  if (found->second.sha256 == record.sha256 || !isBetter(examined, found->second)) {
    return false;
  }
  candidates_.erase(found);
  return true;
}

bool Intake::isBetter(const Examination& examined, Candidate& other) {
  const std::string title = titleOf(*examined.record);
  if (!other.isOfSite) {
    other.isDoubtful = true;
    refuse(examined.file, fmt::format("'{}' has {}, too", other.file, title));
    return false;
  }
  if (!examined.isOfSite) {
    refuse(examined.file, "the site has another package with " + title);
    return false;
  }
  // After a root was lost, nothing says which of them it named.
  const auto rank = [](const auto& each) { return std::tie(each.modified, each.sha256); };
  const bool isLater = rank(*examined.record) > rank(other);
  refuse(isLater ? other.file : examined.file,
         fmt::format("another package of the site has {}, and was modified later", title));
  return isLater;
}

void Intake::take(Examination& examined, const VersionKey& name) {
  Record& record = *examined.record;
  record.isYanked = yanked_.contains(name);
  writeScreenshot(files_, *examined.package, record);
  Candidate candidate{examined.file, record.sha256, record.modified, examined.isOfSite};
  // A page that the old root names belongs to its package until the new root is in place.
  candidate.isPageMissing =
      gone_.contains(name) && files_.exists(record.page) && !isPageOf(files_, record);
  if (!candidate.isPageMissing) {
    // A rebuild makes the same page again.
    const bool isAgain = request_.isRebuilding && isPageOf(files_, record);
    const std::uint64_t old = isAgain ? sequenceAtStart(files_, record.page) : 0;
    writePage(files_, *examined.package, record, old != 0 ? old : sequence_);
  }
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
    refuse(each->second.file, fmt::format("another package has {}, too", titleOf(record)));
    each = candidates_.erase(each);
  }
}

std::vector<Refusal> Intake::takeRefused() {
  std::sort(refused_.begin(), refused_.end(),
            [](const Refusal& a, const Refusal& b) { return a.verdict.file < b.verdict.file; });
  return std::move(refused_);
}

}  // namespace addon::catalogue::detail
