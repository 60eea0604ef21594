// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonRevisionHistory.h"

#include <algorithm>
#include <string_view>

namespace addon::packaging {

namespace {

constexpr Field kRevisionFields[] = {
    field<&AddonRevision::date>("date", "@date", "When it was published.",
                                {.key = "date", .isDate = true, .identity = 2}),
    field<&AddonRevision::version>("version", "@version", "The version.",
                                   {.key = "version", .isKeyRequired = true, .identity = 1}),
    field<&AddonRevision::description>("description", "description", "What is new in it.",
                                       {.key = "description", .isElementRequired = true}),
};

constexpr Field kRevisionListFields[] = {
    field<&AddonRevisionHistory::revisions>(
        "revisions", "revision", "The revisions, in display order.", {.key = "revision"}),
};

// "2026-02-01", optionally followed by a time. Such dates sort as texts.
bool isSortable(std::u16string_view date) {
  constexpr std::u16string_view kForm = u"0000-00-00";
  if (date.size() < kForm.size()) return false;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool isDigit = date[i] >= u'0' && date[i] <= u'9';
    if (kForm[i] == u'0' ? !isDigit : date[i] != kForm[i]) return false;
  }
  return date.size() == kForm.size() || date[kForm.size()] == u'T' || date[kForm.size()] == u' ';
}

}  // namespace

constinit const RecordTable AddonRevision::kTable{"revision", "A version that was published.",
                                                  kRevisionFields};

constinit const DocumentTable AddonRevisionHistory::kTable{
    .record = {"revisions", "The revisions, in display order.", kRevisionListFields},
    .xml = "revisionHistory",
    .make = makeDocument<AddonRevisionHistory>,
    .isList = true};

std::vector<const AddonRevision*> newestOf(const std::vector<AddonRevision>& revisions) {
  const bool isDated = std::all_of(revisions.begin(), revisions.end(),
                                   [](const auto& revision) { return isSortable(revision.date); });
  if (!isDated) return {&revisions.front(), &revisions.back()};
  const auto day = [](const AddonRevision& revision) { return revision.date.substr(0, 10); };
  const auto newest =
      std::max_element(revisions.begin(), revisions.end(),
                       [&](const auto& a, const auto& b) { return day(a) < day(b); });
  std::vector<const AddonRevision*> found;
  for (const AddonRevision& revision : revisions) {
    if (day(revision) == day(*newest)) found.push_back(&revision);
  }
  return found;
}

}  // namespace addon::packaging
