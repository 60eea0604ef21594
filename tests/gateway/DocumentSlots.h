// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "tests/support/HostValues.h"

namespace test {

/// The two gateways of a document, and host structs of it.
struct DocumentSlots {
  const char* name;  ///< of the part, the namespace and the relationship type
  Slot set;
  Slot get;
  HostArray (*sample)();
  HostArray (*other)();
  const char* empty;  ///< the description of a document that was never set
};

inline HostArray sampleLicense(const char16_t* type, const char16_t* text) {
  return makeTable({"type", "text"}, {Texts{type, text}});
}

inline HostArray sampleHistory() {
  return makeTable({"date", "version", "description"},
                   {{u"2015-13-45", u"2", u"<a>\n& b"}, {u"the first day", u"", u"\U0001F600"}});
}

inline HostArray makeConfiguration(HostArray korvanPaths, HostArray javaClassPaths) {
  HostArray s = makeStructArray({1, 1}, {"korvanPaths", "javaClassPaths"});
  setField(s, 0, "korvanPaths", std::move(korvanPaths));
  setField(s, 0, "javaClassPaths", std::move(javaClassPaths));
  return s;
}

inline const std::vector<const char*> kAppFields{"name", "guid", "relativePath",
                                                 "installByDefault"};

inline HostArray sampleApps() {
  return makeTable(kAppFields, {{u"Fit", u"g-1", u"apps/fit.app", u"true"},
                                {u"\u65e5\u672c", u"g-1", u"", u"false"}});
}

inline const std::vector<const char*> kExampleFields{"name", "type",      "source",
                                                     "main", "thumbnail", "images"};

/// A table of examples whose images are all unset; each row has the five texts.
inline HostArray makeExamples(const Shape& shape, const std::vector<Texts>& rows) {
  HostArray examples = makeStructArray(shape, kExampleFields);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t field = 0; field < 5; ++field) {
      setField(examples, i, kExampleFields[field], makeText(rows[i][field]));
    }
  }
  return examples;
}

/// One category; no examples when `examples` is null.
inline HostArray makeCategory(const char16_t* name, HostArray examples) {
  HostArray category = makeStructArray({1, 1}, {"name", "examples"});
  setField(category, 0, "name", makeText(name));
  setField(category, 0, "examples", std::move(examples));
  return category;
}

inline HostArray sampleExamples() {
  HostArray examples = makeExamples(
      {1, 2}, {{u"a", u"script", u"s.mlx", u"m.m", u"t.png"}, {u"b", u"", u"", u"", u""}});
  setField(examples, 0, "images", makeCell({u"1.png", u""}));
  return makeCategory(u"First & foremost", std::move(examples));
}

inline const std::vector<const char*> kDependencyFields{"name", "version", "identifier"};

inline HostArray makeRequirements(HostArray products, HostArray packages) {
  HostArray s = makeStructArray({1, 1}, {"productDependency", "supportPackageDependency"});
  setField(s, 0, "productDependency", std::move(products));
  setField(s, 0, "supportPackageDependency", std::move(packages));
  return s;
}

inline HostArray sampleRequirements() {
  return makeRequirements(
      makeTable(kDependencyFields, {{u"Korvan", u"9", u"KV"}, {u"\"Q\"", u"", u""}}),
      makeTable(kDependencyFields, {{u"USB", u"any", u"SP"}}));
}

inline constexpr DocumentSlots kDocumentSlots[] = {
    {"license", kSetLicense, kGetLicense, [] { return sampleLicense(u"MIT", u"the\nterms"); },
     [] { return sampleLicense(u"BSD", u""); }, "[1x1 (type='' text='')]"},
    {"revisionHistory", kSetRevisionHistory, kGetRevisionHistory, sampleHistory,
     [] {
       return makeTable({"date", "version", "description"}, {{u"d", u"v", u"x"}});
     },
     "[1x0 date version description]"},
    {"configuration", kSetConfiguration, kGetConfiguration,
     [] {
       return makeConfiguration(makeCell({u"/", u"", u"/"}), makeCell({u"a&b.jar"}));
     },
     [] { return makeConfiguration(makeCell({}), makeCell({u"other.jar"})); },
     "[1x1 (korvanPaths={1x0} javaClassPaths={1x0})]"},
    {"applications", kSetAppInstallList, kGetAppInstallList, sampleApps,
     [] {
       return makeTable(kAppFields, {{u"o", u"", u"p", u"true"}});
     },
     "[1x0 name guid relativePath installByDefault]"},
    {"examples", kSetExamples, kGetExamples, sampleExamples,
     [] { return makeCategory(u"other", nullptr); }, "[1x0 name examples]"},
    {"systemRequirements", kSetSystemRequirements, kGetSystemRequirements, sampleRequirements,
     [] {
       return makeRequirements(nullptr, makeTable(kDependencyFields, {{u"o", u"", u""}}));
     },
     "[1x1 (productDependency=- supportPackageDependency=-)]"},
};

}  // namespace test
