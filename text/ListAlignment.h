// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace text {

/// What a record of a list is recognised by in another version of the list.
struct RecordKeys {
  std::string whole;              ///< all that it says
  std::vector<std::string> keys;  ///< the best one first; "" is none
};

/// The place of a record in the first and in the second list.
using RecordPair = std::pair<std::size_t, std::size_t>;

/// Which records are the same one, so that a record that is put in or taken out does not make all
/// behind it differ: those that are equal, then those with an equal key, then those that are left
/// over at the same place. Both places rise from pair to pair: of records that changed their order,
/// as few as possible are left without a partner.
std::vector<RecordPair> alignRecords(const std::vector<RecordKeys>& a,
                                     const std::vector<RecordKeys>& b);

}  // namespace text
