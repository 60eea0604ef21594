// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/Field.h"
#include "hostarray/kxarray.h"

// How documents become host structs and come back: one function per rule, for all of them.
//
// Reading raises the host's errors (matrix::HostError) for what is not of the expected class.
// Arrays under way are owned by an ArrayPointer, so that whatever is thrown, none is left behind.

namespace addon::packaging {

struct DocumentTable;

struct ArrayDeleter {
  void operator()(kxArray* array) const { kxDestroyArray(array); }
};

/// A host array that nothing else owns yet.
using ArrayPointer = std::unique_ptr<kxArray, ArrayDeleter>;

// Writing.

/// `count` elements with all fields unset. A struct of one record has one element; a list of none
/// is an array without elements that still has its fields.
ArrayPointer createStruct(const RecordTable& table, std::size_t count);
/// Sets the fields of element `index`, in order. Without entries a list of records stays unset, and
/// one of texts when its field says so.
void writeStruct(const ConstRecord& record, kxArray* array, std::size_t index);
/// The host struct of a document.
ArrayPointer toStruct(const DocumentTable& table, const ConstRecord& document);

/// A text ends at its first U+0000, as the host's own does.
ArrayPointer toText(const std::u16string& text);
/// A 1-by-N cell array. Frees each text as soon as the array has it.
ArrayPointer toTextCell(std::vector<std::u16string> texts);
/// The text "true" or "false": flags are not numbers, to the host and in XML alike.
ArrayPointer toFlag(bool value);
std::u16string flagText(bool value);

/// Hands `value` over to the struct.
void setField(kxArray* array, std::size_t index, const char* name, ArrayPointer value);

// Reading.

/// Reads the fields of element `index`, in order. Texts and flags must be there and be text; a list
/// may be missing or unset. Each record of a list is read as an element of its own, taken with the
/// host's indexing.
void readStruct(const Record& record, const kxArray* array, std::size_t index);
/// Reads a document; a list has one record per element.
void readStruct(const DocumentTable& table, const Record& document, const kxArray* array);

/// A field that must be there and be text.
std::u16string readText(const kxArray* array, std::size_t index, const char* name);

/// The texts of a cell array of any shape, in linear order.
std::vector<std::u16string> readTextCell(const kxArray* cell);
/// A field that holds a cell array of texts; none when it is missing, unset or empty.
std::vector<std::u16string> readOptionalTexts(const kxArray* array, std::size_t index,
                                              const char* name);

/// The two readings of a flag, which differ for everything but "true" and "false": what comes from
/// the host is set unless it is exactly "false", what comes from XML only if it is exactly "true".
bool isNotFalse(std::u16string_view text);
bool isTrue(std::u16string_view text);

}  // namespace addon::packaging
