// SPDX-License-Identifier: MIT
#include "addon/comparison/DocumentComparison.h"

#include <fmt/format.h>

#include <algorithm>

#include "opc/Text.h"
#include "text/ListAlignment.h"

namespace addon::comparison {

using addon::packaging::ConstRecord;
using addon::packaging::DocumentTable;
using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::RecordTable;
using text::RecordKeys;

namespace {

/// Appends the text so that what follows cannot be taken for a part of it.
void append(std::u16string_view text, std::string& to) {
  to += std::to_string(text.size()) + ":" + opc::toUtf8ForDisplay(text);
}

/// All that a record says, as one text that no other record has.
void append(const ConstRecord& record, std::string& to) {
  for (const Field& field : record.table().fields) {
    switch (field.kind()) {
      case FieldKind::Text:
        append(record.text(field), to);
        break;
      case FieldKind::Flag:
        to += record.flag(field) ? '1' : '0';
        break;
      case FieldKind::Texts:
        to += std::to_string(record.texts(field).size()) + ";";
        for (const auto& text : record.texts(field)) append(text, to);
        break;
      case FieldKind::Records:
        to += std::to_string(record.size(field)) + ";";
        for (std::size_t i = 0; i < record.size(field); ++i) append(record.at(field, i), to);
        break;
    }
  }
}

/// The entries of a field that holds a list.
class List {
 public:
  List(const ConstRecord& record, const Field& field) : record_(record), field_(field) {}

  std::size_t size() const { return isOfTexts() ? texts().size() : record_.size(field_); }
  bool isOfTexts() const { return field_.kind() == FieldKind::Texts; }
  ConstRecord record(std::size_t index) const { return record_.at(field_, index); }

  DocumentValue value(std::size_t index) const {
    if (isOfTexts()) return texts()[index];
    return record(index);
  }

  std::vector<RecordKeys> keys() const {
    std::vector<RecordKeys> all(size());
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (isOfTexts()) {
        append(texts()[i], all[i].whole);
        continue;
      }
      append(record(i), all[i].whole);
      for (const Field* field : identifying(field_.table())) {
        all[i].keys.push_back(opc::toUtf8ForDisplay(record(i).text(*field)));
      }
    }
    return all;
  }

 private:
  const std::vector<std::u16string>& texts() const { return record_.texts(field_); }

  /// The best one first.
  static std::vector<const Field*> identifying(const RecordTable& table) {
    std::vector<const Field*> fields;
    for (const Field& field : table.fields) {
      if (field.identity > 0) fields.push_back(&field);
    }
    std::sort(fields.begin(), fields.end(),
              [](const Field* a, const Field* b) { return a->identity < b->identity; });
    return fields;
  }

  ConstRecord record_;
  const Field& field_;
};

/// Walks through both documents along their table, which is a few levels deep.
class Comparison {
 public:
  std::vector<FieldDifference> take() { return std::move(differences_); }

  void compareRecord(const std::string& path, const ConstRecord& a, const ConstRecord& b) {
    for (const Field& field : a.table().fields) {
      compareField(field, fmt::format("{}.{}", path, field.name), a, b);
    }
  }

  void compareList(const std::string& path, const List& a, const List& b) {
    std::size_t aNext = 0;
    std::size_t bNext = 0;
    const auto aKeys = a.keys();
    const auto bKeys = b.keys();
    for (const auto& [i, j] : text::alignRecords(aKeys, bKeys)) {
      addAlone(path, a, aNext, i, b, bNext, j);
      const std::string place = fmt::format("{}[{}]", path, j);
      if (!a.isOfTexts()) {
        compareRecord(place, a.record(i), b.record(j));
      } else if (aKeys[i].whole != bKeys[j].whole) {
        differences_.push_back({place, a.value(i), b.value(j)});
      }
      aNext = i + 1;
      bNext = j + 1;
    }
    addAlone(path, a, aNext, a.size(), b, bNext, b.size());
  }

 private:
  void compareField(const Field& field, const std::string& path, const ConstRecord& a,
                    const ConstRecord& b) {
    if (a.isUnset(field) && b.isUnset(field)) return;
    const bool isSet = !a.isUnset(field) && !b.isUnset(field);
    if (isSet && field.isList()) return compareList(path, List(a, field), List(b, field));
    const bool isSame = isSet && (field.kind() == FieldKind::Flag ? a.flag(field) == b.flag(field)
                                                                  : a.text(field) == b.text(field));
    if (!isSame) differences_.push_back({path, FieldValue{a, &field}, FieldValue{b, &field}});
  }

  /// What stands between two pairs: on one side only.
  void addAlone(const std::string& path, const List& a, std::size_t aBegin, std::size_t aEnd,
                const List& b, std::size_t bBegin, std::size_t bEnd) {
    for (std::size_t i = aBegin; i < aEnd; ++i) {
      differences_.push_back({fmt::format("{}[{}]", path, i), a.value(i), {}});
    }
    for (std::size_t j = bBegin; j < bEnd; ++j) {
      differences_.push_back({fmt::format("{}[{}]", path, j), {}, b.value(j)});
    }
  }

  std::vector<FieldDifference> differences_;
};

}  // namespace

std::vector<FieldDifference> compareDocuments(const DocumentTable& table, const ConstRecord& a,
                                              const ConstRecord& b) {
  Comparison comparison;
  if (table.isList) {
    comparison.compareList(table.name(), List(a, table.list()), List(b, table.list()));
  } else {
    comparison.compareRecord(table.name(), a, b);
  }
  return comparison.take();
}

}  // namespace addon::comparison
