// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "hostarray/kxarray.h"

// How documents become host structs and come back: one rule a function, for all of them.
//
// Reading raises the host's errors (matrix::HostError) for what is not of the expected class.
// Arrays under way are owned by an ArrayPointer, so that whatever is thrown, none is left behind.

namespace addon::packaging {

struct ArrayDeleter {
  void operator()(kxArray* array) const { kxDestroyArray(array); }
};

/// A host array that nothing else owns yet.
using ArrayPointer = std::unique_ptr<kxArray, ArrayDeleter>;

/// A field of a host struct that holds one text of a document or record.
template <typename Record>
struct TextField {
  const char* name;
  std::u16string Record::*member;
};

// Writing.

/// `count` elements with all fields empty. A struct of one record has one element; a list of none
/// is an array without elements that still has its fields.
ArrayPointer createStruct(std::size_t count, std::span<const char* const> fieldNames);

/// A text ends at its first U+0000, as the host's own does.
ArrayPointer toText(const std::u16string& text);
/// A 1-by-N cell array.
ArrayPointer toTextCell(const std::vector<std::u16string>& texts);
/// The text "true" or "false": flags are no numbers, to the host and in XML alike.
ArrayPointer toFlag(bool value);
std::u16string flagText(bool value);

/// Hands `value` over to the struct.
void setField(kxArray* array, std::size_t index, const char* name, ArrayPointer value);

/// The names of a table of fields, in order.
template <typename Record, std::size_t N>
std::array<const char*, N> fieldNames(const TextField<Record> (&fields)[N]) {
  std::array<const char*, N> names;
  for (std::size_t i = 0; i < N; ++i) names[i] = fields[i].name;
  return names;
}

/// Sets every field of the table in element `index`, in order.
template <typename Record, std::size_t N>
void writeTexts(const Record& record, kxArray* array, std::size_t index,
                const TextField<Record> (&fields)[N]) {
  for (const auto& field : fields) setField(array, index, field.name, toText(record.*field.member));
}

/// A struct array of one element a record. A record class offers createStructArray(count), which
/// makes the array with the record's fields, and addRow(array, index), which fills an element.
template <typename Record>
ArrayPointer toStructArray(const std::vector<Record>& records) {
  ArrayPointer array(Record::createStructArray(records.size()));
  for (std::size_t i = 0; i < records.size(); ++i) records[i].addRow(array.get(), i);
  return array;
}

// Reading.

/// A field that must be there and be text.
std::u16string readText(const kxArray* array, std::size_t index, const char* name);

/// Reads every field of the table from element `index`, in order.
template <typename Record, std::size_t N>
void readTexts(Record& record, const kxArray* array, std::size_t index,
               const TextField<Record> (&fields)[N]) {
  for (const auto& field : fields) record.*field.member = readText(array, index, field.name);
}

/// The texts of a cell array of any shape, in linear order.
std::vector<std::u16string> readTextCell(const kxArray* cell);
/// A field that holds a cell array of texts; none when it is missing, unset or empty.
std::vector<std::u16string> readOptionalTexts(const kxArray* array, std::size_t index,
                                              const char* name);

/// The two readings of a flag, which differ for everything but "true" and "false": what comes from
/// the host is set unless it is exactly "false", what comes from XML only if it is exactly "true".
bool isNotFalse(std::u16string_view text);
bool isTrue(std::u16string_view text);

/// The elements of an array one after the other, each taken with the host's own indexing.
class ElementLoop {
 public:
  /// `array` may be null, which has no elements.
  explicit ElementLoop(const kxArray* array);

  /// Whether there is an element to take; element() is then that one.
  bool next();
  /// Belongs to the host's current call.
  const kxArray* element() const { return element_; }

 private:
  const kxArray* array_;
  ArrayPointer subscript_;
  std::size_t count_;
  std::size_t taken_ = 0;
  const kxArray* element_ = nullptr;
};

/// A list of records, each constructed from the array and the index of its element.
template <typename Record>
std::vector<Record> readElements(const kxArray* array) {
  std::vector<Record> records;
  const std::size_t count = kxGetNumberOfElements(array);
  for (std::size_t i = 0; i < count; ++i) records.emplace_back(array, i);
  return records;
}

/// A nested list of records, each constructed from an element of its own. `array` may be null.
template <typename Record>
std::vector<Record> readRecords(const kxArray* array) {
  std::vector<Record> records;
  for (ElementLoop loop(array); loop.next();) records.emplace_back(loop.element());
  return records;
}

}  // namespace addon::packaging
