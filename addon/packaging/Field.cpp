// SPDX-License-Identifier: MIT
#include "addon/packaging/Field.h"

#include <algorithm>

#include "opc/Text.h"

namespace addon::packaging {

const Field* RecordTable::find(std::string_view name) const {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const Field& field) { return field.name == name; });
  return found == fields.end() ? nullptr : &*found;
}

const Field& RecordTable::of(const Member& member) const {
  return *std::find_if(fields.begin(), fields.end(),
                       [&](const Field& field) { return field.member == &member; });
}

std::string labelOf(std::string_view name) {
  const auto isUpper = [](char c) { return c >= 'A' && c <= 'Z'; };
  std::string label;
  for (const char c : name) {
    const bool isNewWord = isUpper(c) && !label.empty() && !isUpper(label.back());
    label += isNewWord ? std::string(" ") + opc::toLowerAscii(c) : std::string(1, c);
  }
  const bool isLower = !label.empty() && label.front() >= 'a' && label.front() <= 'z';
  if (isLower) label.front() = static_cast<char>(label.front() - 'a' + 'A');
  return label;
}

bool ConstRecord::isEmpty(const Field& field) const {
  switch (field.kind()) {
    case FieldKind::Text:
      return text(field).empty();
    case FieldKind::Texts:
      return texts(field).empty();
    case FieldKind::Records:
      return size(field) == 0;
    case FieldKind::Flag:
      break;
  }
  return false;
}

bool ConstRecord::isUnset(const Field& field) const {
  const bool mayBe = field.isUnsetWhenEmpty || field.kind() == FieldKind::Records;
  return mayBe && isEmpty(field);
}

void Record::clear(const Field& field) const {
  if (field.kind() == FieldKind::Texts) return texts(field).clear();
  field.member->clear(member(field));
}

}  // namespace addon::packaging
