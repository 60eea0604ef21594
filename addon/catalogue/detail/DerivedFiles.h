// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include "addon/catalogue/detail/Database.h"
#include "addon/catalogue/detail/DatabaseFile.h"
#include "addon/catalogue/detail/SiteFiles.h"
#include "addon/catalogue/detail/SiteState.h"
#include "addon/gallery/FrontPage.h"
#include "opc/interfaces/Background.h"
#include "opc/interfaces/Progress.h"

namespace addon::catalogue::detail {

/// The files of a site that are derived from what its root names: pages, lines of records,
/// database, front page and its terms. The front page is put in place last, so that its sequence
/// says whether the others are complete.
class DerivedFiles {
 public:
  /// All must outlive it. `stop` and `starter` may be empty.
  DerivedFiles(SiteFiles& files, const opc::interfaces::StopFunction& stop,
               const opc::interfaces::BackgroundStarter& starter)
      : files_(files), stop_(stop), starter_(starter) {}

  /// Whether they are those of the root of `state`.
  bool areOf(const SiteState& state) const;

  /// What is to be written: for the root of `state`. If the old ones were complete for `old`, only
  /// the add-ons with these keys can have changed.
  struct Request {
    const SiteState& state;
    const SiteState& old;
    const std::set<std::string>& keys;
    bool isOldComplete;
  };
  void write(const Request& request);

 private:
  void writePages(const SiteState& state);
  void writeLines(const Request& request);
  /// Changes the copy of the old one and puts it in place. Returns false if it is damaged.
  bool changeDatabase(const Request& request, DatabaseFile& file);
  void makeDatabase(const SiteState& state);
  void writeFrontPage(const Request& request);
  /// Returns false if the old one is not what it should be.
  bool changeFrontPage(const gallery::FrontPage& fresh, const Database& database,
                       const std::set<std::string>& keys);
  using WriteList = std::function<void(const SiteFiles::Sink& page, const SiteFiles::Sink& terms)>;
  void putFrontPage(std::uint64_t sequence, const WriteList& write);
  void check() const;

  SiteFiles& files_;
  const opc::interfaces::StopFunction& stop_;
  const opc::interfaces::BackgroundStarter& starter_;
};

}  // namespace addon::catalogue::detail
