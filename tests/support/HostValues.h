// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <string>
#include <vector>

#include "hostarray/matrix.h"
#include "opc/Text.h"
#include "tests/support/GatewayCaller.h"

// Makes host arrays from values, and prints host arrays as one line of text for comparison.

namespace test {

using Shape = std::array<std::size_t, 2>;

inline HostArray makeText(const char16_t* text) {
  return makeText(std::u16string(text));
}

inline HostArray makeStructArray(const Shape& shape, const std::vector<const char*>& names) {
  return HostArray(kxCreateStructArray(shape.size(), shape.data(), names.size(), names.data()));
}

/// A struct array of texts, one row of values per element, in linear order.
inline HostArray makeTable(const Shape& shape, const std::vector<const char*>& names,
                           const std::vector<Texts>& rows) {
  HostArray table = makeStructArray(shape, names);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t field = 0; field < names.size(); ++field) {
      kxSetField(table.get(), i, names[field], makeText(rows[i][field]).release());
    }
  }
  return table;
}

/// A table of one row.
inline HostArray makeTable(const std::vector<const char*>& names, const std::vector<Texts>& rows) {
  return makeTable({1, rows.size()}, names, rows);
}

inline HostArray makeCell(const Shape& shape, const Texts& texts) {
  HostArray cell(kxCreateCellArray(shape.size(), shape.data()));
  for (std::size_t i = 0; i < texts.size(); ++i) {
    kxSetCell(cell.get(), i, makeText(texts[i]).release());
  }
  return cell;
}

inline void setField(const HostArray& array, std::size_t index, const char* name, HostArray value) {
  kxSetField(array.get(), index, name, value.release());
}

std::string describe(const kxArray* array);

inline std::string describeElement(const kxArray* structure, std::size_t index) {
  std::string text = "(";
  for (std::size_t i = 0; i < kxGetNumberOfFields(structure); ++i) {
    const char* name = kxGetFieldName(structure, i);
    text +=
        std::string(i == 0 ? "" : " ") + name + "=" + describe(kxGetField(structure, index, name));
  }
  return text + ")";
}

/// Texts as 'text', cells as {1x2 'a' 'b'}, structs as [1x1 (name='a' files=-)] with a dash for
/// an unset value; a struct without elements lists its fields, as [1x0 name files].
inline std::string describe(const kxArray* array) {
  if (array == nullptr) return "-";
  if (kxIsChar(array)) return "'" + opc::toUtf8(matrix::get_ustring(array)) + "'";
  if (kxIsDouble(array)) return "number";
  const std::size_t* sizes = kxGetDimensions(array);
  const std::size_t count = kxGetNumberOfElements(array);
  std::string text = std::to_string(sizes[0]) + "x" + std::to_string(sizes[1]);
  for (std::size_t i = 0; i < count; ++i) {
    text += " " + (kxIsCell(array) ? describe(kxGetCell(array, i)) : describeElement(array, i));
  }
  if (kxIsCell(array)) return "{" + text + "}";
  for (std::size_t i = 0; count == 0 && i < kxGetNumberOfFields(array); ++i) {
    text += std::string(" ") + kxGetFieldName(array, i);
  }
  return "[" + text + "]";
}

}  // namespace test
