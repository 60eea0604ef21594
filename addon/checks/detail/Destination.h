// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "opc/model/Package.h"
#include "opc/model/Part.h"

namespace addon::checks::detail {

/// Where the relationships of one type lead from the package.
struct Destination {
  enum class Kind : std::uint8_t {
    Nowhere,  ///< there are none
    Several,  ///< there are several, so that none can be told to be the right one
    Outside,  ///< out of the package
    Missing,  ///< to a part that is not there
    Part,
  };

  Kind kind = Kind::Nowhere;
  std::string name;                        ///< the target; "" for none and several
  std::shared_ptr<opc::model::Part> part;  ///< of Kind::Part
  std::size_t count = 0;                   ///< of relationships
};

/// The package must be open.
Destination follow(opc::model::Package& package, std::u16string_view relationshipType);

}  // namespace addon::checks::detail
