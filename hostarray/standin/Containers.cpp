// SPDX-License-Identifier: MIT
// Arrays that hold arrays: structs and cells.
#include <memory>
#include <string>

#include "hostarray/standin/Array.h"
#include "hostarray/standin/Raise.h"

using hostarray::standin::allocate;
using hostarray::standin::create;
using hostarray::standin::FieldNames;
using hostarray::standin::raise;
using hostarray::standin::require;
using hostarray::standin::requireElement;
using hostarray::standin::store;
using hostarray::standin::toSizes;

namespace {

/// The position of a field, or FieldNames::kNone; raises a host error for no struct and no element.
std::size_t findField(const kxArray* array, std::size_t index, const char* name) {
  const kxArray& structure = require(array, kxSTRUCT_CLASS);
  requireElement(structure, index);
  if (name == nullptr) raise("badArgument", "The name of a field is missing.");
  return structure.fields->find(name);
}

std::size_t slotOf(const kxArray& structure, std::size_t index, std::size_t field) {
  return index * structure.fields->size() + field;
}

}  // namespace

kxArray* kxCreateStructArray(std::size_t dimensions, const std::size_t* sizes, std::size_t fields,
                             const char* const* names) {
  return create([&] {
    return allocate(kxSTRUCT_CLASS, toSizes(dimensions, sizes),
                    std::make_shared<const FieldNames>(fields, names));
  });
}

void kxSetField(kxArray* array, std::size_t index, const char* name, kxArray* value) {
  const std::size_t field = findField(array, index, name);
  if (field == FieldNames::kNone) {
    raise("badArgument", std::string("The struct has no field '") + name + "'.");
  }
  store(*array, slotOf(*array, index, field), value);
}

kxArray* kxGetField(const kxArray* array, std::size_t index, const char* name) {
  const std::size_t field = findField(array, index, name);
  if (field == FieldNames::kNone) return nullptr;
  return array->children()[slotOf(*array, index, field)];
}

std::size_t kxGetNumberOfFields(const kxArray* array) {
  return require(array, kxSTRUCT_CLASS).fields->size();
}

const char* kxGetFieldName(const kxArray* array, std::size_t field) {
  const FieldNames& names = *require(array, kxSTRUCT_CLASS).fields;
  if (field >= names.size()) {
    raise("indexOutOfRange", "Field " + std::to_string(field) + " does not exist in a struct of " +
                                 std::to_string(names.size()) + " fields.");
  }
  return names.name(field).c_str();
}

kxArray* kxCreateCellArray(std::size_t dimensions, const std::size_t* sizes) {
  return create([&] { return allocate(kxCELL_CLASS, toSizes(dimensions, sizes)); });
}

void kxSetCell(kxArray* array, std::size_t index, kxArray* value) {
  requireElement(require(array, kxCELL_CLASS), index);
  store(*array, index, value);
}

kxArray* kxGetCell(const kxArray* array, std::size_t index) {
  const kxArray& cell = require(array, kxCELL_CLASS);
  requireElement(cell, index);
  return cell.children()[index];
}
