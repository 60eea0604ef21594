// SPDX-License-Identifier: MIT
#pragma once

#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"

// Documents at random, and the texts that they are made of.

namespace test {

using TextPointers = std::vector<std::u16string*>;

inline std::u16string toUtf16(const std::vector<char32_t>& points) {
  std::u16string text;
  for (const char32_t point : points) {
    if (point < 0x10000) {
      text += static_cast<char16_t>(point);
    } else {
      text += static_cast<char16_t>(0xD7C0 + (point >> 10));
      text += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
    }
  }
  return text;
}

/// Any text that XML can carry, with more of what needs care than chance would bring.
inline rc::Gen<std::u16string> xmlText() {
  const auto range = [](char32_t first, char32_t last) {
    return rc::gen::inRange<char32_t>(first, last + 1);
  };
  const auto point = rc::gen::weightedOneOf<char32_t>(
      {{4, rc::gen::elementOf(std::u32string(U"\t\n\r <>&\"']-/=;#\u0085\u2028\u00A0"))},
       {4, range(0x20, 0x7E)},
       {2, range(0x7F, 0xD7FF)},
       {1, range(0xE000, 0xFFFD)},
       {1, range(0x10000, 0x10FFFF)}});
  return rc::gen::map(rc::gen::container<std::vector<char32_t>>(point), toUtf16);
}

/// A code unit that no XML text may hold where it stands alone.
inline rc::Gen<char16_t> forbiddenUnit() {
  const auto range = [](int first, int last) {
    return rc::gen::map(rc::gen::inRange(first, last + 1),
                        [](int unit) { return static_cast<char16_t>(unit); });
  };
  return rc::gen::oneOf(range(0x0, 0x8), range(0xB, 0xC), range(0xE, 0x1F), range(0xD800, 0xDFFF),
                        range(0xFFFE, 0xFFFF));
}

/// Up to six, each filled by `fill`.
template <typename Record, typename Fill>
void fillList(std::vector<Record>& list, Fill fill) {
  list.resize(*rc::gen::inRange<std::size_t>(0, 7));
  for (Record& record : list) fill(record);
}

inline void fillTexts(const TextPointers& texts) {
  for (std::u16string* text : texts) *text = *xmlText();
}

inline TextPointers pointersTo(std::vector<std::u16string>& texts) {
  TextPointers pointers;
  for (std::u16string& text : texts) pointers.push_back(&text);
  return pointers;
}

// All texts of a record or document that are written as XML.

inline TextPointers textsOf(addon::packaging::AddonProperties& p) {
  return {&p.GUID, &p.description, &p.authorName, &p.authorContact, &p.authorOrganization};
}
inline TextPointers textsOf(addon::packaging::AddonLicense& license) {
  return {&license.type, &license.text};
}
inline TextPointers textsOf(addon::packaging::AddonAppInstall& app) {
  return {&app.name, &app.guid, &app.relativePath};
}
inline TextPointers textsOf(addon::packaging::AddonRevision& revision) {
  return {&revision.date, &revision.version, &revision.description};
}
inline TextPointers textsOf(addon::packaging::ProductDependency& dependency) {
  return {&dependency.name, &dependency.version, &dependency.identifier};
}

inline void append(TextPointers& all, const TextPointers& more) {
  all.insert(all.end(), more.begin(), more.end());
}

template <typename Record>
TextPointers textsOf(std::vector<Record>& records) {
  TextPointers all;
  for (Record& record : records) append(all, textsOf(record));
  return all;
}

inline TextPointers textsOf(addon::packaging::AddonConfiguration& configuration) {
  TextPointers all = pointersTo(configuration.korvanPaths);
  append(all, pointersTo(configuration.javaClassPaths));
  return all;
}
inline TextPointers textsOf(addon::packaging::AddonAppInstallList& list) {
  return textsOf(list.apps);
}
inline TextPointers textsOf(addon::packaging::Example& example) {
  TextPointers all{&example.name, &example.type, &example.source, &example.main,
                   &example.thumbnail};
  append(all, pointersTo(example.images));
  return all;
}
inline TextPointers textsOf(addon::packaging::ExampleCategory& category) {
  TextPointers all{&category.name};
  for (auto& example : category.examples) append(all, textsOf(example));
  return all;
}
inline TextPointers textsOf(addon::packaging::AddonExamples& document) {
  TextPointers all;
  for (auto& category : document.categories) append(all, textsOf(category));
  return all;
}
inline TextPointers textsOf(addon::packaging::AddonRevisionHistory& history) {
  return textsOf(history.revisions);
}
inline TextPointers textsOf(addon::packaging::AddonSystemRequirements& requirements) {
  TextPointers all = textsOf(requirements.productDependencies);
  append(all, textsOf(requirements.supportPackageDependencies));
  return all;
}

// The lists of a document, with room for their texts.

inline void fillLists(addon::packaging::AddonProperties&) {}
inline void fillLists(addon::packaging::AddonLicense&) {}
inline void fillLists(addon::packaging::AddonConfiguration& configuration) {
  fillList(configuration.korvanPaths, [](auto&) {});
  fillList(configuration.javaClassPaths, [](auto&) {});
}
inline void fillLists(addon::packaging::AddonAppInstallList& list) {
  fillList(list.apps, [](auto& app) { app.installByDefault = *rc::gen::arbitrary<bool>(); });
}
inline void fillLists(addon::packaging::AddonExamples& document) {
  fillList(document.categories, [](auto& category) {
    fillList(category.examples, [](auto& example) { fillList(example.images, [](auto&) {}); });
  });
}
inline void fillLists(addon::packaging::AddonRevisionHistory& history) {
  fillList(history.revisions, [](auto&) {});
}
inline void fillLists(addon::packaging::AddonSystemRequirements& requirements) {
  fillList(requirements.productDependencies, [](auto&) {});
  fillList(requirements.supportPackageDependencies, [](auto&) {});
}

/// A document at random. Only inside a property.
template <typename Document>
Document anyDocument() {
  Document document;
  fillLists(document);
  fillTexts(textsOf(document));
  return document;
}

}  // namespace test
