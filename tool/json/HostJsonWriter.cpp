// SPDX-License-Identifier: MIT
// Host arrays to JSON. The way back is in HostJson.cpp.
#include <fmt/format.h>

#include <cmath>
#include <string>
#include <string_view>

#include "tool/json/HostJson.h"

namespace tool::json {

namespace {

bool isRow(const kxArray* array) {
  return kxGetNumberOfDimensions(array) == 2 && kxGetDimensions(array)[0] == 1;
}

bool hasFieldLikeClassKey(const kxArray* array) {
  for (std::size_t i = 0; i < kxGetNumberOfFields(array); ++i) {
    if (kClassKey == kxGetFieldName(array, i)) return true;
  }
  return false;
}

/// Whether the short form of a struct array, one object per element, reads back the same.
bool isShortStruct(const kxArray* array) {
  return isRow(array) && kxGetNumberOfElements(array) > 0 && !hasFieldLikeClassKey(array);
}

bool isShortCell(const kxArray* array) {
  if (!isRow(array)) return false;
  const std::size_t count = kxGetNumberOfElements(array);
  bool hasOnlyObjects = count > 0;
  for (std::size_t i = 0; i < count; ++i) {
    const kxArray* element = kxGetCell(array, i);
    if (element == nullptr) return false;
    const bool isObject =
        kxIsStruct(element) && kxGetNumberOfElements(element) == 1 && isShortStruct(element);
    hasOnlyObjects = hasOnlyObjects && isObject;
  }
  // An array of nothing but objects would read back as a struct array.
  return !hasOnlyObjects;
}

bool isLead(char16_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}
bool isTrail(char16_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

class Writer {
 public:
  explicit Writer(text::JsonWriter& json) : json_(json) {}

  void write(const kxArray* array) {
    if (++depth_ > text::kMaxJsonDepth) {
      throw JsonError(fmt::format("the array is more than {} levels deep", text::kMaxJsonDepth));
    }
    switch (kxGetClass(array)) {
      case kxCHAR_CLASS:
        writeChars(array);
        break;
      case kxDOUBLE_CLASS:
        writeDoubles(array);
        break;
      case kxCELL_CLASS:
        writeCell(array);
        break;
      case kxSTRUCT_CLASS:
        writeStruct(array);
        break;
    }
    --depth_;
  }

  void writeList(const kxArray* array) {
    json_.beginArray();
    ++depth_;
    for (std::size_t i = 0; i < kxGetNumberOfElements(array); ++i) writeObject(array, i);
    --depth_;
    json_.endArray();
  }

 private:
  void writeOrNull(const kxArray* array) {
    if (array == nullptr) {
      json_.null();
    } else {
      write(array);
    }
  }

  void beginClass(std::string_view name, const kxArray* array) {
    json_.beginObject();
    json_.member(kClassKey, name);
    json_.key("size");
    json_.beginArray();
    const std::size_t* sizes = kxGetDimensions(array);
    for (std::size_t i = 0; i < kxGetNumberOfDimensions(array); ++i) {
      json_.value(static_cast<std::uint64_t>(sizes[i]));
    }
    json_.endArray();
  }

  void writeChars(const kxArray* array) {
    const std::u16string_view text(kxGetConstChars(array), kxGetNumberOfElements(array));
    if (isRow(array)) return json_.value(text);
    beginClass("char", array);
    json_.key("elements");
    json_.beginArray();
    for (std::size_t i = 0; i < text.size();) {
      const bool isPair = isLead(text[i]) && i + 1 < text.size() && isTrail(text[i + 1]);
      const std::size_t length = isPair ? 2 : 1;
      json_.value(text.substr(i, length));
      i += length;
    }
    json_.endArray();
    json_.endObject();
  }

  void writeDoubles(const kxArray* array) {
    const double* values = kxGetConstDoubles(array);
    const std::size_t count = kxGetNumberOfElements(array);
    const bool isScalar = isRow(array) && count == 1;
    if (isScalar && std::isfinite(values[0])) return json_.value(values[0]);
    beginClass("double", array);
    json_.key("elements");
    json_.beginArray();
    for (std::size_t i = 0; i < count; ++i) writeDouble(values[i]);
    json_.endArray();
    json_.endObject();
  }

  void writeDouble(double value) {
    if (std::isfinite(value)) return json_.value(value);
    if (std::isnan(value)) return json_.value("NaN");
    json_.value(value > 0 ? "Infinity" : "-Infinity");
  }

  void writeCell(const kxArray* array) {
    const bool isShort = isShortCell(array);
    if (!isShort) {
      beginClass("cell", array);
      json_.key("elements");
    }
    json_.beginArray();
    for (std::size_t i = 0; i < kxGetNumberOfElements(array); ++i) writeOrNull(kxGetCell(array, i));
    json_.endArray();
    if (!isShort) json_.endObject();
  }

  void writeObject(const kxArray* array, std::size_t index) {
    json_.beginObject();
    for (std::size_t i = 0; i < kxGetNumberOfFields(array); ++i) {
      const char* name = kxGetFieldName(array, i);
      json_.key(name);
      writeOrNull(kxGetField(array, index, name));
    }
    json_.endObject();
  }

  void writeStruct(const kxArray* array) {
    if (isShortStruct(array)) {
      if (kxGetNumberOfElements(array) > 1) return writeList(array);
      return writeObject(array, 0);
    }
    beginClass("struct", array);
    json_.key("fields");
    json_.beginArray();
    for (std::size_t i = 0; i < kxGetNumberOfFields(array); ++i) {
      json_.value(kxGetFieldName(array, i));
    }
    json_.endArray();
    json_.key("elements");
    writeList(array);
    json_.endObject();
  }

  text::JsonWriter& json_;
  std::size_t depth_ = 0;
};

}  // namespace

void writeHostArray(const kxArray* array, text::JsonWriter& writer) {
  Writer(writer).write(array);
}

}  // namespace tool::json
