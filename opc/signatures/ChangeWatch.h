// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "opc/model/Package.h"
#include "opc/signatures/SignableParts.h"

namespace opc::signatures {

/// Finds out whether a change to an open package makes its signatures invalid. Costs nothing for a
/// package without signatures.
class ChangeWatch {
 public:
  /// Remembers which parts there are. The package must stay open.
  explicit ChangeWatch(model::Package& package);

  /// Whether a signature that was valid would not be valid after a commit. Reads only the parts
  /// that were changed since; all others are taken to be as they were signed. A signature that
  /// cannot be checked counts as invalid if anything was changed. Throws SystemError.
  bool hasBroken() const;

 private:
  struct Known {
    std::string type;
    /// Nothing if the part has to be read to tell: one in pieces, or changed relationships.
    std::optional<model::PartId> id;
    std::optional<interfaces::ItemIndex> item;  ///< new content is in a new item

    bool operator==(const Known&) const = default;
  };
  using Parts = std::map<std::string, Known>;

  Parts parts() const;
  /// Names of parts that were changed, added or removed.
  std::set<std::string> namesOfChanged(const Parts& now) const;

  model::Package& package_;
  std::optional<Parts> before_;  // nothing if the package was not signed
};

}  // namespace opc::signatures
