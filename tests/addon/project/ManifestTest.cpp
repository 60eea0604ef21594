// SPDX-License-Identifier: MIT
#include "addon/project/Manifest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "opc/Text.h"

namespace {

using addon::packaging::AddonAppInstallList;
using addon::packaging::AddonLicense;
using addon::packaging::AddonProperties;
using addon::packaging::AddonRevisionHistory;
using addon::project::Manifest;
using addon::project::ManifestError;
using addon::project::ManifestKey;
using addon::project::manifestKeys;
using addon::project::outputPath;
using addon::project::Position;
using addon::project::readManifest;
using addon::project::Texts;

const std::string kMinimal = "[package]\nname = \"Wave\"\nversion = \"1.0\"\n";

/// What is said about a manifest; "" when it is read.
std::string faultOf(const std::string& text) {
  try {
    readManifest(text);
  } catch (const ManifestError& error) {
    return error.what();
  }
  return {};
}

std::vector<std::string> valuesOf(const Texts& texts) {
  std::vector<std::string> values;
  for (const auto& text : texts.value) values.push_back(text.value);
  return values;
}

using Strings = std::vector<std::string>;

struct Fault {
  const char* name;
  const char* text;      // follows kMinimal, from line 4 on, unless it begins with [package]
  const char* expected;  // after "bad manifest 'kraddon.toml:"
};

class ManifestFaults : public testing::TestWithParam<Fault> {};

TEST_P(ManifestFaults, AreNamedWithTheirPlace) {
  const std::string text = GetParam().text;
  const bool isWhole = text.starts_with("[pack") || text.starts_with("package");

  const std::string fault = faultOf(isWhole ? text : kMinimal + text);

  EXPECT_EQ(fault, std::string("bad manifest 'kraddon.toml:") + GetParam().expected);
}

const Fault kSyntaxFaults[] = {
    {"OpenHeader", "[package\nname = 1\n",
     "1:9': error while parsing table header: expected ']', saw '\\n'"},
    {"KeyTwice", "[package]\nname = \"a\"\nname = \"b\"\n",
     "3:8': error while parsing key-value pair: cannot redefine existing string 'name'"},
    {"HeaderWithoutAKey", "[&a]\n",
     "4:2': error while parsing key: expected bare key starting character or string delimiter, saw "
     "'&'"},
    {"LetterBeyondAscii", "\xC3\xA4 = 1\n",
     "4:1': error while parsing root table: expected keys, tables, whitespace or comments, saw "
     "'\xC3\xA4'"},
    {"QuotedKeyBeyondAscii", "[license]\n\"\xC3\xA4\" = 1\n",
     "5:1': unknown key 'license.\xC3\xA4': the keys are type, text, file"},
    {"RawControlCharacter", "[license]\ntext = \"a\x01\"\n",
     "5:10': a string cannot contain control characters, except for tabs"},
    {"OpenString", "[license]\ntext = \"abc\ntype = \"x\"\n",
     "5:12': the string is not closed: its closing quote is missing"},
    {"OpenLiteral", "[license]\ntext = 'abc\r\n",
     "5:12': the string is not closed: its closing quote is missing"},
    {"OpenBlock", "[license]\ntext = \"\"\"abc\n",
     "5:15': the string is not closed: its closing quotes are missing"},
    {"TypographicQuote", "[license]\ntext = \u201Cabc\u201D\n",
     "5:8': the quote \u201C does not begin a string: write \""},
    {"NoQuotes", "[license]\ntext = abc\n",
     "5:8': expected a value: a string stands between quotes, as in \"text\""},
    {"NoValue", "[license]\ntext =\n", "5:7': the value is missing"},
    {"OpenArray", "[files]\ninclude = [\"a\",\n", "5:17': the array is not closed by ']'"},
};

const Fault kKeyFaults[] = {
    {"MisspeltTable", "[packge]\nname = \"a\"\n",
     "1:2': unknown key 'packge': did you mean 'package'?"},
    {"MisspeltTableLater", "[licence]\n", "4:2': unknown key 'licence': did you mean 'license'?"},
    {"MisspeltKey", "[package]\nnmae = \"a\"\nversion = \"1\"\n",
     "2:1': unknown key 'package.nmae': did you mean 'name'?"},
    {"MisspeltKeyOfARecord", "[[app]]\nname = \"a\"\nfile = \"a\"\n[[app]]\nflie = \"x\"\n",
     "8:1': unknown key 'app[1].flie': did you mean 'file'?"},
    {"MisspeltKeyTwoRecordsDeep",
     "[[category]]\nname = \"a\"\n[[category.example]]\nname = \"a\"\n"
     "image = []\n",
     "8:1': unknown key 'category[0].example[0].image': did you mean 'images'?"},
    {"UnknownKeyThatIsNearNone", "[verify]\nqqqqqq = 1\n",
     "5:1': unknown key 'verify.qqqqqq': the keys are ignore, error, warn, strict"},
    {"UnknownDottedKey", "package.name = \"a\"\npackage.version = \"1\"\npackage.frob = \"\"\n",
     "3:9': unknown key 'package.frob': the keys are name, version, type, summary, author, "
     "contact, organization, description, description-file, guid, screenshot"},
    {"TheEarlierOfTwoFaults", "[verify]\nstrict = 1\n[build]\nlevel = \"a\"\n",
     "5:10': verify.strict: expected true or false, got an integer"},
};

const Fault kMissingKeys[] = {
    {"NoPackage", "package_ = 1\n", "1:1': unknown key 'package_': did you mean 'package'?"},
    {"NoName", "[package]\nversion = \"1\"\n",
     "1:1': package.name: the key is missing, expected a string"},
    {"NoVersion", "[package]\nname = \"a\"\n",
     "1:1': package.version: the key is missing, expected a string"},
    {"EmptyName", "[package]\nname = \"\"\nversion = \"1\"\n",
     "2:8': package.name: expected a non-empty string"},
    {"NoAppName", "[[app]]\nfile = \"a\"\n",
     "4:1': app[0].name: the key is missing, expected a string"},
    {"NoAppFile", "[[app]]\nname = \"a\"\n",
     "4:1': app[0].file: the key is missing, expected a string"},
    {"NoCategoryName", "\n[[category]]\n",
     "5:1': category[0].name: the key is missing, expected a string"},
    {"NoExampleName", "[[category]]\nname = \"a\"\n[[category.example]]\n",
     "6:1': category[0].example[0].name: the key is missing, expected a string"},
    {"NoRevisionVersion", "[[revision]]\ndate = \"a\"\n",
     "4:1': revision[0].version: the key is missing, expected a string"},
    {"NoProductName", "[[requirements.product]]\n",
     "4:1': requirements.product[0].name: the key is missing, expected a string"},
    {"NoSupportPackageName", "[[requirements.support-package]]\n",
     "4:1': requirements.support-package[0].name: the key is missing, expected a string"},
    {"NoSource", "[[files.add]]\nto = \"a\"\n",
     "4:1': files.add[0].from: the key is missing, expected a string"},
    {"NoDestination", "[[files.add]]\nfrom = \"a\"\n",
     "4:1': files.add[0].to: the key is missing, expected a string"},
    {"NoDestinationInline", "[files]\nadd = [{from = \"a\"}]\n",
     "5:8': files.add[0].to: the key is missing, expected a string"},
};

const Fault kTypeFaults[] = {
    {"FloatForText", "[package]\nname = \"a\"\nversion = 1.10\n",
     "3:11': package.version: expected a string, got a float, which would lose its final zeros: "
     "write \"1.10\""},
    {"FloatAfterOtherLetters", "package = {name = \"\xC3\xA4\", version = 1.0}\n",
     "1:34': package.version: expected a string, got a float, which would lose its final zeros: "
     "write \"1.0\""},
    {"InfinityForText", "[package]\nname = inf\nversion = \"1\"\n",
     "2:8': package.name: expected a string, got a float: write \"inf\""},
    {"NegativeInfinityForText", "[package]\nname = -inf\nversion = \"1\"\n",
     "2:8': package.name: expected a string, got a float: write \"-inf\""},
    {"NoNumberForText", "[package]\nname = nan\nversion = \"1\"\n",
     "2:8': package.name: expected a string, got a float: write \"nan\""},
    {"PowerOfTenForText", "[package]\nname = 1e3\nversion = \"1\"\n",
     "2:8': package.name: expected a string, got a float: write \"1e3\""},
    {"InfinityForLevel", "[build]\nlevel = inf\n",
     "5:9': build.level: expected a whole number from 0 to 9, got a float"},
    {"IntegerForText", "[[revision]]\nversion = 7 # seven\n",
     "5:11': revision[0].version: expected a string, got an integer: write \"7\""},
    {"BooleanForText", "[license]\ntype = true\n",
     "5:8': license.type: expected a string, got a boolean: write \"true\""},
    {"DateForText", "[license]\ntype = 2026-02-01\n",
     "5:8': license.type: expected a string, got a date: write \"2026-02-01\""},
    {"ArrayForText", "[license]\ntype = [\"a\"]\n",
     "5:8': license.type: expected a string, got an array"},
    {"TableForText", "[license.type]\n", "4:1': license.type: expected a string, got a table"},
    {"DateWithATime", "[[revision]]\nversion = \"1\"\ndate = 2026-02-01T10:00:00Z\n",
     "6:8': revision[0].date: expected a string or a date, got a date with a time"},
    {"TimeForDate", "[[revision]]\nversion = \"1\"\ndate = 10:00:00\n",
     "6:8': revision[0].date: expected a string or a date, got a time"},
    {"TextForFlag", "[verify]\nstrict = \"yes\"\n",
     "5:10': verify.strict: expected true or false, got a string"},
    {"TextForLevel", "[build]\nlevel = \"9\"\n",
     "5:9': build.level: expected a whole number from 0 to 9, got a string"},
    {"LevelTooHigh", "[build]\nlevel = 10\n",
     "5:9': build.level: expected a whole number from 0 to 9, got 10"},
    {"LevelTooLow", "[build]\nlevel = -1\n",
     "5:9': build.level: expected a whole number from 0 to 9, got -1"},
    {"TextForTexts", "[files]\nexclude = \"a\"\n",
     "5:11': files.exclude: expected an array of strings, got a string"},
    {"NumberAmongTexts", "[files]\nexclude = [\"a\", 3]\n",
     "5:17': files.exclude[1]: expected a string, got an integer: write \"3\""},
    {"TextForTable", "[package]\nname = \"a\"\nversion = \"1\"\n[requirements]\nproduct = \"a\"\n",
     "5:11': requirements.product: expected an array of tables, got a string"},
    {"TableForRecords", "[app]\nname = \"a\"\n",
     "4:1': app: expected an array of tables, got a table: its header needs double brackets, "
     "[[app]]"},
    {"TextForRecord", "[requirements]\nproduct = [\"a\"]\n",
     "5:12': requirements.product[0]: expected a table, got a string"},
    {"RecordsForTable", "[[license]]\n", "4:1': license: expected a table, got an array"},
    {"TextForPackage", "package = \"a\"\n", "1:11': package: expected a table, got a string"},
};

const Fault kValueFaults[] = {
    {"ControlCharacter", "[license]\ntext = \"a\\u0007\"\n",
     "5:8': license.text: it contains the control character U+0007"},
    {"ControlCharacterBeyondAscii", "[license]\ntext = \"a\\u0085\"\n",
     "5:8': license.text: it contains the control character U+0085"},
    {"EmptyDescriptionFile", "description-file = \"\"\n",
     "4:20': package.description-file: expected a non-empty path"},
    {"EmptyScreenshot", "screenshot = \"\"\n",
     "4:14': package.screenshot: expected a non-empty path"},
    {"EmptyLicenseFile", "[license]\nfile = \"\"\n",
     "5:8': license.file: expected a non-empty path"},
    {"EmptyRoot", "[files]\nroot = \"\"\n", "5:8': files.root: expected a non-empty path"},
    {"EmptyKorvanPath", "[configuration]\nkorvan-paths = [\".\", \"\"]\n",
     "5:22': configuration.korvan-paths[1]: expected a non-empty path"},
    {"EmptyClassPath", "[configuration]\njava-class-paths = [\"\"]\n",
     "5:21': configuration.java-class-paths[0]: expected a non-empty path"},
    {"EmptyImage",
     "[[category]]\nname = \"a\"\n[[category.example]]\nname = \"b\"\nimages = [\"\"]\n",
     "8:11': category[0].example[0].images[0]: expected a non-empty path"},
    {"ImpossibleDate", "[[revision]]\nversion = \"1\"\ndate = 2026-02-30\n",
     "6:18': error while parsing date: expected day between 1 and 28 (inclusive), saw 30"},
    {"AbsoluteDestination", "[[files.add]]\nfrom = \"a\"\nto = \"/x\"\n",
     "6:6': files.add[0].to: expected a path in the package, without a '/' in front, got "
     "'/x'"},
    {"Nul", "[package]\nname = \"a\\u0000\"\nversion = \"1\"\n",
     "2:8': package.name: it contains the control character U+0000"},
    {"Delete", "[license]\ntext = \"\\u007f\"\n",
     "5:8': license.text: it contains the control character U+007F"},
    {"HighControlCharacter", "[license]\ntext = \"\\u0085\"\n",
     "5:8': license.text: it contains the control character U+0085"},
    {"FormFeed", "[license]\ntext = \"a\\fb\"\n",
     "5:8': license.text: it contains the control character U+000C"},
    {"NoCharacter", "[license]\ntext = \"\\uffff\"\n",
     "5:8': license.text: it contains U+FFFF, which XML cannot carry"},
    {"ControlCharacterInAList", "[files]\ninclude = [\"a\",\n  \"\\u001b\"]\n",
     "6:3': files.include[1]: it contains the control character U+001B"},
    {"ControlCharacterInADate", "[[revision]]\nversion = \"1\"\ndate = \"\\b\"\n",
     "6:8': revision[0].date: it contains the control character U+0008"},
    {"OtherType", "[package]\nname = \"a\"\nversion = \"1\"\ntype = \"Korvan App\"\n",
     "4:8': package.type: unknown type 'Korvan App', expected 'Korvan Toolbox', the only "
     "type"},
    {"TwoDescriptions",
     "[package]\nname = \"a\"\nversion = \"1\"\ndescription-file = \"a\"\ndescription = \"b\"\n",
     "5:15': package.description: expected one of the two, and package.description-file is given "
     "already"},
    {"TwoLicenses", "[license]\ntext = \"a\"\nfile = \"b\"\n",
     "6:8': license.file: expected one of the two, and license.text is given already"},
    {"UnknownPlaceholder", "[build]\noutput = \"{nam}.kraddon\"\n",
     "5:10': build.output: unknown placeholder '{nam}', expected {name} or {version}"},
    {"PlaceholderWithoutEnd", "[build]\noutput = \"{name.kraddon\"\n",
     "5:10': build.output: unknown placeholder '{name.kraddon', expected {name} or {version}"},
    {"EmptyOutput", "[build]\noutput = \"\"\n", "5:10': build.output: expected the path of a file"},
    {"FolderAsOutput", "[build]\noutput = \"dist/\"\n",
     "5:10': build.output: expected the path of a file"},
};

std::string nameOf(const testing::TestParamInfo<Fault>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Syntax, ManifestFaults, testing::ValuesIn(kSyntaxFaults), nameOf);
INSTANTIATE_TEST_SUITE_P(Keys, ManifestFaults, testing::ValuesIn(kKeyFaults), nameOf);
INSTANTIATE_TEST_SUITE_P(Missing, ManifestFaults, testing::ValuesIn(kMissingKeys), nameOf);
INSTANTIATE_TEST_SUITE_P(Types, ManifestFaults, testing::ValuesIn(kTypeFaults), nameOf);
INSTANTIATE_TEST_SUITE_P(Values, ManifestFaults, testing::ValuesIn(kValueFaults), nameOf);

/// The header of a table such as "category[].example[]" and its required keys, but for `key`.
std::string tableWithout(const std::string& key, const std::string& table) {
  std::string header;
  for (const char c : table) header += c == '[' || c == ']' ? "" : std::string(1, c);
  std::string text = table.ends_with("[]") ? "[[" + header + "]]\n" : "[" + header + "]\n";
  for (const ManifestKey& other : manifestKeys()) {
    const bool isHere = other.path.substr(0, other.path.rfind('.')) == table;
    if (!isHere || !other.isRequired || other.path == key) continue;
    text += other.path.substr(other.path.rfind('.') + 1) + " = \"a\"\n";
  }
  return text;
}

/// A manifest that is whole, and gives `value` to a key such as "category[].example[].main".
std::string manifestWith(const std::string& key, const std::string& value) {
  std::string text = key.starts_with("package.") ? "" : kMinimal;
  for (std::size_t dot = key.find('.'); dot != key.npos; dot = key.find('.', dot + 1)) {
    const std::string table = key.substr(0, dot);
    const bool isLast = key.find('.', dot + 1) == key.npos;
    if (isLast || table.ends_with("[]")) text += tableWithout(key, table);
  }
  return text + key.substr(key.rfind('.') + 1) + " = " + value + "\n";
}

TEST(Manifest, EveryKeyRefusesAValueOfAnotherType) {
  for (const ManifestKey& key : manifestKeys()) {
    const std::string text = manifestWith(key.path, "1979-05-27T07:32:00Z");

    const std::string fault = faultOf(text);

    const std::string why = ": expected " + std::string(key.type) + ", got a date with a time";
    EXPECT_NE(fault.find(why), fault.npos) << key.path << "\n" << text << fault;
  }
}

TEST(Manifest, WithOnlyTheRequiredKeysTheOthersHaveDefaults) {
  const Manifest manifest = readManifest(kMinimal);

  EXPECT_EQ(manifest.get<AddonProperties>().name, u"Wave");
  EXPECT_EQ(manifest.get<AddonProperties>().type, u"Korvan Toolbox");
  EXPECT_FALSE(manifest.isGiven("package.guid"));
  EXPECT_FALSE(manifest.isGiven("license"));
  EXPECT_FALSE(manifest.isGiven("configuration"));
  EXPECT_TRUE(manifest.get<AddonAppInstallList>().apps.empty());
  EXPECT_EQ(manifest.files.root.value, ".");
  EXPECT_EQ(valuesOf(manifest.files.include), Strings{"**"});
  EXPECT_TRUE(manifest.files.defaultExcludes.value);
  EXPECT_TRUE(manifest.files.emptyFolders.value);
  EXPECT_EQ(manifest.build.level.value, 6);
  EXPECT_FALSE(manifest.verify.strict.value);
}

TEST(Manifest, KnowsThePositionOfEachValue) {
  const Manifest manifest = readManifest(kMinimal + "[files]\nexclude = [\"a\",\n  \"b\"]\n");

  EXPECT_EQ(manifest.positionOf("package.version"), (Position{3, 11}));
  EXPECT_EQ(manifest.files.position, (Position{4, 1}));
  EXPECT_EQ(manifest.files.exclude.value[1].position, (Position{6, 3}));
}

TEST(Manifest, KeepsTheOrderOfRecords) {
  const Manifest manifest = readManifest(
      kMinimal +
      "[[revision]]\nversion = \"2\"\ndate = 2026-02-01\n[[revision]]\nversion = \"10\"\n"
      "[[revision]]\nversion = \"1\"\ndate = \"May\"\n");

  const auto& revisions = manifest.get<AddonRevisionHistory>().revisions;
  ASSERT_EQ(revisions.size(), 3u);
  EXPECT_EQ(revisions[0].date, u"2026-02-01");
  EXPECT_EQ(revisions[1].version, u"10");
  EXPECT_EQ(revisions[2].date, u"May");
}

TEST(Manifest, ReadsTabsLineEndsAndAByteOrderMark) {
  const Manifest manifest =
      readManifest("\xEF\xBB\xBF" + kMinimal + "[license]\ntext = \"a\\tb\\r\\nc\"\n");

  EXPECT_EQ(manifest.get<AddonLicense>().text, u"a\tb\r\nc");
}

TEST(Manifest, ManyWrongValuesTakeNoLongerThanOne) {
  std::string text = kMinimal + "[files]\nexclude = [";
  for (int i = 0; i < 200000; ++i) text += "1,\n";

  EXPECT_EQ(faultOf(text + "]\n"),
            "bad manifest 'kraddon.toml:5:12': files.exclude[0]: expected a string, got an "
            "integer: write \"1\"");
}

/// A name that is repeated, with dots between.
std::string dotted(const std::string& name, int count) {
  std::string key = name;
  for (int i = 1; i < count; ++i) key += "." + name;
  return key;
}

TEST(Manifest, AKeyWithManyPartsIsRefusedBeforeItIsParsed) {
  const std::string why = "': a key has more than 16 parts";
  for (const std::string& key : {dotted("a", 1000000), dotted("\"a.b\" ", 17), dotted("'.'", 17)}) {
    EXPECT_NE(faultOf(key + " = 1\n").find(why), std::string::npos);
    EXPECT_NE(faultOf("x = '''\n'''''\n[" + key + "]\n").find(why), std::string::npos);
    EXPECT_NE(faultOf("x = [\"\"\"\\\"\"\"\"\"\", {" + key + " = 1}]\n").find(why),
              std::string::npos);
  }
  EXPECT_EQ(faultOf("x = \"\xC3\xA4\"\n \xC3\xA4" + dotted("a", 17) + " = 1\n"),
            "bad manifest 'kraddon.toml:2:34" + why);
  EXPECT_NE(faultOf(dotted("a", 16) + " = 1\n").find("unknown key 'a'"), std::string::npos);
}

TEST(Manifest, ATextMayContainManyDots) {
  const std::string dots = dotted("a", 1000);
  for (const std::string& text :
       {"\"" + dots + "\"", "'" + dots + "'", "\"\\\"" + dots + "\" # " + dots,
        "\"\"\"\n\\\"\"\"" + dots + "\"\"\"\"\"", "'''\n''" + dots + "'''''"}) {
    EXPECT_EQ(faultOf(kMinimal + "summary = " + text + "\n" + "# " + dots), "");
  }
}

TEST(Manifest, AnUnclosedTextWithManyDotsIsASyntaxError) {
  const std::string dots = dotted("a", 1000);
  for (const std::string quote : {"\"", "'", "\"\"\"", "'''"}) {
    for (const char* end : {"", "\n", "\\"}) {
      const std::string fault = faultOf(kMinimal + "summary = " + quote + dots + end);
      EXPECT_NE(fault.find("': the string is not closed"), std::string::npos)
          << quote << end << fault;
    }
  }
}

struct Output {
  const char* name;
  const char* version;
  const char* pattern;
  const char* expected;
};

class OutputPaths : public testing::TestWithParam<Output> {};

TEST_P(OutputPaths, HoldNameAndVersion) {
  Manifest manifest;
  manifest.get<AddonProperties>().name = opc::fromUtf8(GetParam().name);
  manifest.get<AddonProperties>().version = opc::fromUtf8(GetParam().version);
  if (*GetParam().pattern != '\0') manifest.build.output.value = GetParam().pattern;

  EXPECT_EQ(outputPath(manifest), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(All, OutputPaths,
                         testing::Values(Output{"Wave Tools", "1.2", "", "Wave Tools-1.2.kraddon"},
                                         Output{"a/b\\c:d*e?f\"g<h>i|j\nk", "1", "",
                                                "a_b_c_d_e_f_g_h_i_j_k-1.kraddon"},
                                         Output{"../../etc", "1", "", ".._.._etc-1.kraddon"},
                                         Output{"\xC3\xA4", "1", "dist/{version}/{name}{name}.x",
                                                "dist/1/\xC3\xA4\xC3\xA4.x"},
                                         Output{"{version}", "1", "{name}", "{version}"}));

}  // namespace
