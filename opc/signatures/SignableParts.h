// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "opc/model/Package.h"

namespace opc::signatures {

/// A part or a relationships part, as a manifest names it.
struct SignablePart {
  std::string name;                 ///< "/a/b.xml", percent-encoded
  std::string type;                 ///< as the content types say it, without blanks
  std::string relationshipsItem;    ///< the item of a relationships part; "" for any other
  std::optional<model::PartId> id;  ///< nothing for a relationships part that was changed

  bool isRelationships() const { return !relationshipsItem.empty(); }
};

/// All parts and relationships parts of a package as a commit would leave them, in the order of the
/// bytes of their names.
std::vector<SignablePart> signableParts(model::Package& package);

/// How many bytes of a part are read at once.
inline constexpr std::size_t kReadStep = std::size_t{256} << 10;

/// A fresh stream over a part's bytes.
std::unique_ptr<InputStream> open(model::Package& package, const SignablePart& part);

/// "/a/b.xml?ContentType=text/xml"
std::string toReference(const SignablePart& part);

/// The name and the type in such a reference.
struct PartReference {
  std::string name;
  std::string type;
};
/// Returns nothing if `uri` is not such a reference.
std::optional<PartReference> parseReference(const std::string& uri);

}  // namespace opc::signatures
