// SPDX-License-Identifier: MIT
#include "tool/DocumentComparison.h"

#include <fmt/format.h>

#include "text/ListAlignment.h"

namespace tool {

namespace {

using text::RecordKeys;
using text::RecordPair;

/// Walks through both documents along their shape, which is a few levels deep.
class Comparison {
 public:
  std::vector<FieldDifference> take() { return std::move(differences_); }

  void compareRecord(const RecordShape& shape, const std::string& path, const JsonValue& a,
                     const JsonValue& b) {
    for (const FieldShape& field : shape.fields) {
      const std::string name(field.name);
      compareField(field, fmt::format("{}.{}", path, name), a.at(name), b.at(name));
    }
  }

  /// `shape` is null for a list of texts.
  void compareList(const RecordShape* shape, const std::string& path, const JsonValue& a,
                   const JsonValue& b) {
    std::size_t aNext = 0;
    std::size_t bNext = 0;
    for (const auto& [i, j] : text::alignRecords(keysOf(shape, a), keysOf(shape, b))) {
      addAlone(path, a, aNext, i, b, bNext, j);
      const std::string place = fmt::format("{}[{}]", path, j);
      if (shape != nullptr) {
        compareRecord(*shape, place, a[i], b[j]);
      } else if (a[i] != b[j]) {
        differences_.push_back({place, a[i], b[j]});
      }
      aNext = i + 1;
      bNext = j + 1;
    }
    addAlone(path, a, aNext, a.size(), b, bNext, b.size());
  }

 private:
  void compareField(const FieldShape& field, const std::string& path, const JsonValue& a,
                    const JsonValue& b) {
    const bool areLists = field.kind == FieldKind::Texts || field.kind == FieldKind::Records;
    if (areLists && a.is_array() && b.is_array()) {
      compareList(field.record, path, a, b);
    } else if (a != b) {
      differences_.push_back({path, a, b});
    }
  }

  /// What stands between two pairs: on one side only.
  void addAlone(const std::string& path, const JsonValue& a, std::size_t aBegin, std::size_t aEnd,
                const JsonValue& b, std::size_t bBegin, std::size_t bEnd) {
    for (std::size_t i = aBegin; i < aEnd; ++i) {
      differences_.push_back({fmt::format("{}[{}]", path, i), a[i], nullptr});
    }
    for (std::size_t j = bBegin; j < bEnd; ++j) {
      differences_.push_back({fmt::format("{}[{}]", path, j), nullptr, b[j]});
    }
  }

  static std::vector<RecordKeys> keysOf(const RecordShape* shape, const JsonValue& list) {
    std::vector<RecordKeys> all;
    all.reserve(list.size());
    for (const JsonValue& record : list) {
      RecordKeys keys{record.dump(), {}};
      if (shape != nullptr) {
        for (const std::string_view name : shape->keys) {
          const JsonValue& value = record.at(std::string(name));
          keys.keys.push_back(value.is_string() ? value.get<std::string>() : std::string());
        }
      }
      all.push_back(std::move(keys));
    }
    return all;
  }

  std::vector<FieldDifference> differences_;
};

}  // namespace

std::vector<FieldDifference> compareDocuments(const DocumentShape& shape, const JsonValue& a,
                                              const JsonValue& b) {
  Comparison comparison;
  const std::string name(shape.name);
  if (shape.isList) {
    comparison.compareList(&shape.record, name, a, b);
  } else {
    comparison.compareRecord(shape.record, name, a, b);
  }
  return comparison.take();
}

}  // namespace tool
