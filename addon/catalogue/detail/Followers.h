// SPDX-License-Identifier: MIT
#pragma once

#include <set>
#include <string>

#include "addon/catalogue/detail/SiteFiles.h"
#include "addon/catalogue/detail/SiteState.h"
#include "opc/interfaces/Progress.h"

namespace addon::catalogue::detail {

/// What follows the root of a site: pages, lines of records, database, front page and its terms.
/// The front page is put in place last, so that its sequence says whether the others are complete.
class Followers {
 public:
  /// All must outlive it. `stop` may be empty.
  Followers(SiteFiles& files, const opc::interfaces::StopFunction& stop)
      : files_(files), stop_(stop) {}

  /// Whether they are those of that root.
  bool areOf(std::uint64_t sequence) const;

  /// Writes them for the root of `state`. If the old ones were complete for the root before, only
  /// the add-ons with these keys can have changed.
  void write(const SiteState& state, const std::set<std::string>& keys, bool areOthersComplete);

 private:
  void writePages(const SiteState& state);
  void writeLines(const SiteState& state);
  void writeDatabase(const SiteState& state, const std::set<std::string>& keys, bool isChange);
  void changeDatabase(const std::string& path, const SiteState& state,
                      const std::set<std::string>& keys);
  void makeDatabase(const std::string& path, const SiteState& state);
  void writeFrontPage(const SiteState& state);
  void check() const;

  SiteFiles& files_;
  const opc::interfaces::StopFunction& stop_;
};

}  // namespace addon::catalogue::detail
