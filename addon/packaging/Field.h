// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// How a document is described: a table of fields for each record class. Host structs, XML, JSON,
// schemas, manifests, comparisons, checks and pages are all made by these tables.

namespace addon::packaging {

struct RecordTable;

enum class FieldKind : std::uint8_t {
  Text,
  Flag,    ///< to the host, in XML and in JSON the text "true" or "false"
  Texts,   ///< any number of texts
  Records  ///< any number of records of one class
};

/// A member of a record class. Each has one object, kMember, whose address identifies it.
struct Member {
  FieldKind kind;
  void* (*of)(void* record);
  // Of FieldKind::Records: the class of the records, and what can be done with the vector of them.
  const RecordTable* table = nullptr;
  std::size_t (*size)(const void* list) = nullptr;
  void* (*at)(void* list, std::size_t index) = nullptr;
  void* (*append)(void* list) = nullptr;
  void (*clear)(void* list) = nullptr;
};

/// What a path in a document names.
enum class Reference : std::uint8_t {
  None,  ///< the field is not a path
  App,
  ExampleCode,
  ExampleImage,
  SearchPath,
  ClassPath
};

/// What few fields need.
struct FieldOptions {
  const char* key = "";        ///< in a manifest; "" when it has none for the field
  bool isKeyRequired = false;  ///< the key must be there, and its text not be empty
  const char* fileKey = "";    ///< a key for a file with the text, to be given instead of `key`
  const char* initial = "";    ///< what holds without the key
  const char* otherwise = "";  ///< where the value comes from without the key, for the manual
  const char* only = "";       ///< the one text that the key may have
  bool isDate = false;         ///< the key may have a TOML date, too
  Reference reference = Reference::None;
  /// 1 for the text that best distinguishes the records of a list, 2 for the next best; 0 for
  /// none.
  int identity = 0;
  bool isElementRequired = false;  ///< XML without the element is incomplete
  bool isUnsetWhenEmpty = false;   ///< of texts: without any the field of a host struct is unset
  bool isFixed = false;            ///< made with the package, and never changed
};

/// One line of a table. Required in host structs and JSON are texts and flags; lists are not.
struct Field : FieldOptions {
  const char* name;  ///< in host structs and in JSON
  /// Where the value is in the record's element: "@name" is an attribute, "file" the text of an
  /// element, "authors/author/name" the text of one further in, "licenseText/@type" an attribute of
  /// an element, "file[@type=main]" the text of the "file" element with that attribute. Elements of
  /// lists are repeated. "" for what does not stand in the part.
  const char* xml;
  const char* help;  ///< one sentence
  const Member* member;

  FieldKind kind() const { return member->kind; }
  bool isList() const { return kind() == FieldKind::Texts || kind() == FieldKind::Records; }
  const RecordTable& table() const { return *member->table; }
};

/// "Install by default" for "installByDefault".
std::string labelOf(std::string_view name);

/// An attribute that is always written and never read.
struct XmlConstant {
  const char* xml;
  const char* value;
};

/// The fields of a record class, in the order of its host struct.
struct RecordTable {
  const char* noun;  ///< "app"; of a document its name on the command line
  const char* help;  ///< one sentence
  std::span<const Field> fields;
  std::span<const XmlConstant> constants = {};

  /// Null when there is none of that name.
  const Field* find(std::string_view name) const;
  /// The field of a member, which must have one.
  const Field& of(const Member& member) const;
};

/// The table of a record class. A document's has an overload of its own.
constexpr const RecordTable& recordTable(const RecordTable& table) {
  return table;
}

/// A record of any class, with its table. Refers to the record, which must outlive it.
class ConstRecord {
 public:
  template <typename Class>
  requires requires { Class::kTable; }
  explicit ConstRecord(const Class& record)
      : ConstRecord(recordTable(Class::kTable), const_cast<Class*>(&record)) {}

  const RecordTable& table() const { return *table_; }

  const std::u16string& text(const Field& field) const { return get<std::u16string>(field); }
  bool flag(const Field& field) const { return get<bool>(field); }
  const std::vector<std::u16string>& texts(const Field& field) const {
    return get<std::vector<std::u16string>>(field);
  }
  /// How many records the field holds.
  std::size_t size(const Field& field) const { return field.member->size(member(field)); }
  ConstRecord at(const Field& field, std::size_t index) const {
    return {field.table(), field.member->at(member(field), index)};
  }

  /// Whether the field holds no text, no list entry; a flag is never empty.
  bool isEmpty(const Field& field) const;
  /// Whether the field stays unset in a host struct, and null in JSON.
  bool isUnset(const Field& field) const;

 protected:
  ConstRecord(const RecordTable& table, void* data) : table_(&table), data_(data) {}
  void* member(const Field& field) const { return field.member->of(data_); }

 private:
  template <typename Value>
  const Value& get(const Field& field) const {
    return *static_cast<const Value*>(member(field));
  }

  const RecordTable* table_;
  void* data_;
};

/// One that can be changed.
class Record : public ConstRecord {
 public:
  template <typename Class>
  requires requires { Class::kTable; }
  explicit Record(Class& record) : ConstRecord(recordTable(Class::kTable), &record) {}

  std::u16string& text(const Field& field) const {
    return *static_cast<std::u16string*>(member(field));
  }
  bool& flag(const Field& field) const { return *static_cast<bool*>(member(field)); }
  std::vector<std::u16string>& texts(const Field& field) const {
    return *static_cast<std::vector<std::u16string>*>(member(field));
  }
  Record at(const Field& field, std::size_t index) const {
    return {field.table(), field.member->at(member(field), index)};
  }
  /// A new record at the end of the list.
  Record append(const Field& field) const {
    return {field.table(), field.member->append(member(field))};
  }
  /// Makes a list empty.
  void clear(const Field& field) const;

 private:
  Record(const RecordTable& table, void* data) : ConstRecord(table, data) {}
};

namespace detail {

template <typename Pointer>
struct MemberTraits;
template <typename ClassType, typename ValueType>
struct MemberTraits<ValueType ClassType::*> {
  using Class = ClassType;
  using Value = ValueType;
};

template <auto kPointer>
constexpr Member describeMember() {
  using Class = typename MemberTraits<decltype(kPointer)>::Class;
  using Value = typename MemberTraits<decltype(kPointer)>::Value;
  constexpr auto kOf = [](void* record) -> void* {
    return &(static_cast<Class*>(record)->*kPointer);
  };
  if constexpr (std::is_same_v<Value, std::u16string>) {
    return {FieldKind::Text, kOf};
  } else if constexpr (std::is_same_v<Value, bool>) {
    return {FieldKind::Flag, kOf};
  } else if constexpr (std::is_same_v<Value, std::vector<std::u16string>>) {
    return {FieldKind::Texts, kOf};
  } else {
    return {
        FieldKind::Records,
        kOf,
        &Value::value_type::kTable,
        [](const void* list) { return static_cast<const Value*>(list)->size(); },
        [](void* list, std::size_t index) -> void* { return &(*static_cast<Value*>(list))[index]; },
        [](void* list) -> void* { return &static_cast<Value*>(list)->emplace_back(); },
        [](void* list) { static_cast<Value*>(list)->clear(); }};
  }
}

}  // namespace detail

/// The member that a pointer to it names.
template <auto kPointer>
inline constexpr Member kMember = detail::describeMember<kPointer>();

/// The line of a table for a member.
template <auto kPointer>
constexpr Field field(const char* name, const char* xml, const char* help,
                      FieldOptions options = {}) {
  return {options, name, xml, help, &kMember<kPointer>};
}

/// Whether the field is that member.
template <auto kPointer>
bool isMember(const Field& field) {
  return field.member == &kMember<kPointer>;
}

}  // namespace addon::packaging
