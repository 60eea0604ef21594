// SPDX-License-Identifier: MIT
// JSON to host arrays. The way back is in HostJsonWriter.cpp.
#include "tool/json/HostJson.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_set>
#include <vector>

#include "opc/Text.h"

namespace tool::json {

namespace {

/// Puts a place in front of what went wrong further in.
template <typename Body>
auto at(const std::string& place, Body body) {
  try {
    return body();
  } catch (const JsonError& error) {
    const std::string why = error.what();
    const bool isFurtherIn = why.starts_with('.') || why.starts_with('[');
    throw JsonError(place + (isFurtherIn ? "" : ": ") + why);
  }
}

std::string indexPlace(std::size_t index) {
  return fmt::format("[{}]", index);
}
std::string memberPlace(std::string_view name) {
  return fmt::format(".{}", name);
}

bool isPlainObject(const JsonValue& value) {
  return value.is_object() && value.find(kClassKey) == value.end();
}

void checkFieldName(const std::string& name) {
  if (name.empty()) throw JsonError("a field has no name");
  if (name.find('\0') != std::string::npos) throw JsonError("the name of a field contains NUL");
}

HostArrayPointer makeStruct(const std::vector<std::size_t>& sizes,
                            const std::vector<std::string>& fields) {
  std::vector<const char*> names;
  names.reserve(fields.size());
  for (const std::string& field : fields) {
    checkFieldName(field);
    names.push_back(field.c_str());
  }
  return HostArrayPointer(
      kxCreateStructArray(sizes.size(), sizes.data(), names.size(), names.data()));
}

void setFields(kxArray* array, std::size_t index, const JsonValue& object) {
  for (const auto& [name, value] : object.get_ref<const JsonValue::object_t&>()) {
    if (value.is_null()) continue;
    at(memberPlace(name), [&, &name = name, &value = value] {
      kxSetField(array, index, name.c_str(), toHostArray(value).release());
    });
  }
}

std::vector<std::string> namesOf(const JsonValue& object) {
  std::vector<std::string> names;
  for (const auto& member : object.get_ref<const JsonValue::object_t&>()) {
    names.push_back(member.first);
  }
  return names;
}

void checkSameFields(const JsonValue& object, const std::unordered_set<std::string>& fields) {
  for (const auto& member : object.get_ref<const JsonValue::object_t&>()) {
    if (fields.count(member.first) != 0) continue;
    throw JsonError(fmt::format("the field '{}' is not one of the first element", member.first));
  }
  if (object.size() != fields.size()) {
    throw JsonError("it has fewer fields than the first element");
  }
}

HostArrayPointer toStructArray(const JsonValue& list) {
  const std::vector<std::string> names = namesOf(list.front());
  const std::unordered_set<std::string> fields(names.begin(), names.end());
  HostArrayPointer array = makeStruct({1, list.size()}, names);
  for (std::size_t i = 0; i < list.size(); ++i) {
    at(indexPlace(i), [&] {
      checkSameFields(list[i], fields);
      setFields(array.get(), i, list[i]);
    });
  }
  return array;
}

HostArrayPointer toCellArray(const JsonValue& list) {
  const std::array<std::size_t, 2> sizes{1, list.size()};
  HostArrayPointer array(kxCreateCellArray(sizes.size(), sizes.data()));
  for (std::size_t i = 0; i < list.size(); ++i) {
    at(indexPlace(i), [&] { kxSetCell(array.get(), i, toHostArray(list[i]).release()); });
  }
  return array;
}

HostArrayPointer toArray(const JsonValue& list) {
  const bool isStruct = !list.empty() && std::all_of(list.begin(), list.end(), isPlainObject);
  return isStruct ? toStructArray(list) : toCellArray(list);
}

/// The "$class" form.
class ClassForm {
 public:
  explicit ClassForm(const JsonValue& object) {
    for (const auto& [name, value] : object.get_ref<const JsonValue::object_t&>()) {
      at(memberPlace(name), [&, &name = name, &value = value] { take(name, value); });
    }
    if (sizes_.empty()) throw JsonError("the member 'size' is missing");
    if (elementCount() != expectedCount()) {
      throw JsonError(fmt::format("the size requires {} elements, and there are {}",
                                  expectedCount(), elementCount()));
    }
  }

  HostArrayPointer build() const {
    if (class_ != "struct" && hasFields_) throw JsonError("only a struct has 'fields'");
    if (class_ == "struct") return buildStruct();
    if (class_ == "cell") return buildCell();
    if (class_ == "char") return buildChars();
    return buildDoubles();
  }

 private:
  void take(const std::string& name, const JsonValue& value) {
    if (name == kClassKey) return takeClass(value);
    if (name == "size") return takeSize(value);
    if (name == "fields") return takeFields(value);
    if (name != "elements") throw JsonError("no member has that name");
    if (!value.is_array()) throw JsonError("expected an array");
    elements_ = &value;
  }

  void takeClass(const JsonValue& value) {
    static constexpr std::array<std::string_view, 4> kClasses{"struct", "cell", "char", "double"};
    if (value.is_string()) class_ = value.get_ref<const std::string&>();
    if (std::find(kClasses.begin(), kClasses.end(), class_) == kClasses.end()) {
      throw JsonError("expected \"struct\", \"cell\", \"char\" or \"double\"");
    }
  }

  void takeSize(const JsonValue& value) {
    if (!value.is_array() || value.empty()) throw JsonError("expected an array of whole numbers");
    for (const JsonValue& extent : value) {
      if (!extent.is_number_unsigned()) throw JsonError("expected an array of whole numbers");
      sizes_.push_back(extent.get<std::size_t>());
    }
    if (sizes_.size() == 1) sizes_.insert(sizes_.begin(), 1);
  }

  void takeFields(const JsonValue& value) {
    hasFields_ = true;
    if (!value.is_array()) throw JsonError("expected an array of texts");
    std::unordered_set<std::string> seen;
    for (const JsonValue& field : value) {
      if (!field.is_string()) throw JsonError("expected an array of texts");
      fields_.push_back(field.get<std::string>());
      if (!seen.insert(fields_.back()).second) {
        throw JsonError(fmt::format("the field '{}' is given twice", fields_.back()));
      }
    }
  }

  /// How many elements the size calls for; saturates, and is then more than any list holds.
  std::size_t expectedCount() const {
    if (std::find(sizes_.begin(), sizes_.end(), 0u) != sizes_.end()) return 0;
    std::size_t count = 1;
    for (const std::size_t extent : sizes_) {
      if (count > std::numeric_limits<std::size_t>::max() / extent) {
        return std::numeric_limits<std::size_t>::max();
      }
      count *= extent;
    }
    return count;
  }

  /// Of a char array: its UTF-16 code units.
  std::size_t elementCount() const {
    if (elements_ == nullptr) return 0;
    return class_ == "char" ? characters().size() : elements_->size();
  }

  std::u16string characters() const {
    std::u16string text;
    if (elements_ == nullptr) return text;
    for (const JsonValue& element : *elements_) {
      if (!element.is_string()) throw JsonError(".elements: expected texts");
      text += opc::fromUtf8(element.get_ref<const std::string&>());
    }
    return text;
  }

  template <typename Body>
  void forEachElement(Body body) const {
    for (std::size_t i = 0; elements_ != nullptr && i < elements_->size(); ++i) {
      at(".elements" + indexPlace(i), [&] { body(i, (*elements_)[i]); });
    }
  }

  HostArrayPointer buildStruct() const {
    if (!hasFields_) throw JsonError("the member 'fields' is missing");
    const std::unordered_set<std::string> known(fields_.begin(), fields_.end());
    HostArrayPointer array = makeStruct(sizes_, fields_);
    forEachElement([&](std::size_t i, const JsonValue& element) {
      if (!element.is_object()) throw JsonError("expected an object");
      for (const std::string& name : namesOf(element)) {
        if (known.count(name) == 0) {
          throw JsonError(fmt::format("the field '{}' is not among 'fields'", name));
        }
      }
      setFields(array.get(), i, element);
    });
    return array;
  }

  HostArrayPointer buildCell() const {
    HostArrayPointer array(kxCreateCellArray(sizes_.size(), sizes_.data()));
    forEachElement([&](std::size_t i, const JsonValue& element) {
      if (!element.is_null()) kxSetCell(array.get(), i, toHostArray(element).release());
    });
    return array;
  }

  HostArrayPointer buildChars() const {
    const std::u16string text = characters();
    HostArrayPointer array(kxCreateCharArray(sizes_.size(), sizes_.data()));
    std::copy(text.begin(), text.end(), kxGetChars(array.get()));
    return array;
  }

  HostArrayPointer buildDoubles() const {
    HostArrayPointer array(kxCreateDoubleArray(sizes_.size(), sizes_.data()));
    forEachElement([&](std::size_t i, const JsonValue& element) {
      kxGetDoubles(array.get())[i] = toDouble(element);
    });
    return array;
  }

  static double toDouble(const JsonValue& value) {
    if (value.is_number()) return value.get<double>();
    if (value == "NaN") return std::numeric_limits<double>::quiet_NaN();
    if (value == "Infinity") return std::numeric_limits<double>::infinity();
    if (value == "-Infinity") return -std::numeric_limits<double>::infinity();
    throw JsonError("expected a number, or \"NaN\", \"Infinity\" or \"-Infinity\"");
  }

  std::string class_;
  std::vector<std::size_t> sizes_;
  std::vector<std::string> fields_;
  bool hasFields_ = false;
  const JsonValue* elements_ = nullptr;
};

HostArrayPointer toStruct(const JsonValue& object) {
  HostArrayPointer array = makeStruct({1, 1}, namesOf(object));
  setFields(array.get(), 0, object);
  return array;
}

}  // namespace

HostArrayPointer toHostText(std::u16string_view text) {
  // Not by kxCreateString_UTF16, which ends at a NUL.
  const std::array<std::size_t, 2> sizes{1, text.size()};
  HostArrayPointer array(kxCreateCharArray(sizes.size(), sizes.data()));
  if (!text.empty()) std::copy(text.begin(), text.end(), kxGetChars(array.get()));
  return array;
}

HostArrayPointer toHostArray(const JsonValue& value) {
  if (value.is_string()) return toHostText(opc::fromUtf8(value.get_ref<const std::string&>()));
  if (value.is_boolean()) return toHostText(value.get<bool>() ? u"true" : u"false");
  if (value.is_number()) return HostArrayPointer(kxCreateDoubleScalar(value.get<double>()));
  if (value.is_array()) return toArray(value);
  if (value.is_null()) throw JsonError("null is allowed only as a field of a struct");
  return isPlainObject(value) ? toStruct(value) : ClassForm(value).build();
}

}  // namespace tool::json
