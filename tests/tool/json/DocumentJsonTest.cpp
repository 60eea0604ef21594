// SPDX-License-Identifier: MIT
#include "tool/json/DocumentJson.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "addon/packaging/Documents.h"
#include "hostarray/matrix.h"
#include "hostarray/standin/testing.h"
#include "tests/support/TemporaryFolder.h"
#include "tool/json/Documents.h"
#include "tool/process/Errors.h"

namespace {

using addon::packaging::ArrayPointer;
using addon::packaging::DocumentTable;
using addon::packaging::OwnedDocument;
using text::JsonError;

OwnedDocument documentOf(std::string_view name, std::string_view json) {
  const DocumentTable& table = tool::json::findDocument(name);
  OwnedDocument document = table.make();
  tool::json::readDocument(table, document.record, text::parseJson(json));
  return document;
}

std::string errorOf(std::string_view document, std::string_view json) {
  try {
    documentOf(document, json);
  } catch (const JsonError& error) {
    return error.what();
  }
  return "no error";
}

std::string roundTrip(std::string_view document, std::string_view json) {
  return tool::json::toJson(tool::json::findDocument(document), documentOf(document, json).record,
                            text::JsonWriter::Layout::Compact);
}

struct Case {
  const char* name;
  const char* document;
  const char* json;
  const char* result;
};

class WrongDocument : public testing::TestWithParam<Case> {};

TEST_P(WrongDocument, IsRefusedByPlaceAndReason) {
  EXPECT_EQ(errorOf(GetParam().document, GetParam().json), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    DocumentJson, WrongDocument,
    testing::Values(
        Case{"ObjectForList", "apps", R"({"name": "a"})", "apps: expected an array of objects"},
        Case{"ListForObject", "license", "[]", "license: expected an object"},
        Case{"TextAsRecord", "revisions", R"(["x"])", "revisions[0]: expected an object"},
        Case{"NullAsRecord", "examples", "[null]", "examples[0]: expected an object"},
        Case{"UnknownField", "apps", R"([{"name": "", "gudi": ""}])",
             "apps[0].gudi: unknown field, did you mean 'guid'?"},
        Case{"FarField", "requirements", R"({"x": null})",
             "requirements.x: unknown field, no field has that name"},
        Case{"MissingField", "revisions",
             R"([{"date": "", "version": "", "description": ""}, {"date": "", "version": ""}])",
             "revisions[1].description: it is missing"},
        Case{"NullForRequired", "revisions", R"([{"date": null}])",
             "revisions[0].date: expected a string"},
        Case{"NumberForText", "examples", R"([{"name": 1}])",
             "examples[0].name: expected a string"},
        Case{"BooleanFlag", "apps", R"([{"installByDefault": true}])",
             "apps[0].installByDefault: expected the string \"true\" or \"false\""},
        Case{"OddFlag", "apps", R"([{"installByDefault": "True"}])",
             "apps[0].installByDefault: expected the string \"true\" or \"false\""},
        Case{"TextForTexts", "configuration", R"({"korvanPaths": "."})",
             "configuration.korvanPaths: expected an array of texts"},
        Case{"NumberAmongTexts", "configuration", R"({"javaClassPaths": ["a", 2]})",
             "configuration.javaClassPaths[1]: expected a string"},
        Case{"ObjectForRecords", "requirements", R"({"productDependency": {}})",
             "requirements.productDependency: expected an array of objects"},
        Case{"FarInside", "examples",
             R"([{"name": "a"}, {"name": "b", "examples": []},
                 {"name": "c", "examples": [{"images": "x.png"}]}])",
             "examples[2].examples[0].images: expected an array of texts"}),
    [](const auto& test) { return std::string(test.param.name); });

class RightDocument : public testing::TestWithParam<Case> {};

TEST_P(RightDocument, ComesBack) {
  EXPECT_EQ(errorOf(GetParam().document, GetParam().json), "no error");
  EXPECT_EQ(roundTrip(GetParam().document, GetParam().json), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    DocumentJson, RightDocument,
    testing::Values(
        Case{"EmptyList", "apps", "[]", "[]"},
        Case{"OptionalLeftOut", "configuration", "{}", R"({"korvanPaths":[],"javaClassPaths":[]})"},
        Case{"OptionalNull", "examples", R"([{"examples": null, "name": "a"}])",
             R"([{"name":"a","examples":null}])"},
        Case{"OneRecordInAList", "requirements",
             R"({"supportPackageDependency": [{"identifier": "i", "name": "n", "version": ""}]})",
             R"({"productDependency":null,"supportPackageDependency":)"
             R"([{"name":"n","version":"","identifier":"i"}]})"},
        Case{"FieldsInAnotherOrder", "apps",
             R"([{"installByDefault": "false", "relativePath": "p", "guid": "g", "name": "n"}])",
             R"([{"name":"n","guid":"g","relativePath":"p","installByDefault":"false"}])"},
        Case{"EmptyTexts", "configuration", R"({"korvanPaths": [""], "javaClassPaths": []})",
             R"({"korvanPaths":[""],"javaClassPaths":[]})"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(DocumentJson, ItsFieldsAreThoseOfTheHostStruct) {
  const test::TemporaryFolder folder;
  std::u16string path = (folder.path() / "p.kraddon").u16string();
  addon::packaging::AddonProperties properties;
  properties.type = u"Korvan Toolbox";
  addon::packaging::AddonPackage package(path, properties);

  for (const DocumentTable* table : addon::packaging::documents()) {
    const OwnedDocument document = addon::packaging::loadDocument(package, *table);
    const ArrayPointer array = toStruct(*table, document.record);

    const auto names = tool::json::fieldNames(table->records());
    ASSERT_EQ(kxGetNumberOfFields(array.get()), names.size()) << table->name();
    for (std::size_t i = 0; i < names.size(); ++i) {
      EXPECT_EQ(kxGetFieldName(array.get(), i), names[i]) << table->name();
    }
    EXPECT_EQ(kxGetNumberOfElements(array.get()), table->isList ? 0u : 1u) << table->name();
  }
}

TEST(DocumentJson, OnlyPropertiesAndLicenseAreFlat) {
  for (const DocumentTable* table : addon::packaging::documents()) {
    const std::string_view name = table->name();
    EXPECT_EQ(tool::json::isFlat(*table), name == "properties" || name == "license") << name;
  }
}

TEST(DocumentJson, NothingIsLeftBehindWhenTheHostRunsOutOfMemory) {
  const OwnedDocument document = documentOf(
      "examples", R"([{"name": "a", "examples": [{"name": "", "type": "", "source": "", "main": "",
          "thumbnail": "", "images": ["x", "y"]}]}])");
  const std::size_t before = hostarray::standin::liveArrays();
  std::size_t failures = 0;
  for (std::size_t n = 1; n <= 12; ++n) {
    hostarray::standin::failCreation(n);
    try {
      toStruct(tool::json::findDocument("examples"), document.record);
    } catch (const matrix::HostError&) {
      ++failures;
    }
    hostarray::standin::failCreation(0);
    EXPECT_EQ(hostarray::standin::liveArrays(), before) << n;
  }
  EXPECT_EQ(failures, 11u);
}

TEST(Documents, AnUnknownNameGetsTheNearest) {
  try {
    tool::json::findDocument("revision");
    FAIL();
  } catch (const tool::process::UsageError& error) {
    EXPECT_STREQ(error.what(), "unknown document 'revision': did you mean 'revisions'?");
  }
}

}  // namespace
