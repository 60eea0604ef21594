// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/gateway/DocumentSlots.h"
#include "tests/gateway/GatewayFixture.h"

// What is each document's own: from the host's struct to the written XML and back.

namespace {

using test::HostArray;
using test::makeCell;
using test::makeText;

class ListDocumentGateways : public test::GatewayTest {
 protected:
  void SetUp() override { createPackage(); }

  /// Stores a document and gives what is read back.
  std::string through(test::Slot set, const HostArray& document) const {
    write(set, {document.get()});
    return described(set);
  }
  /// What the getter beside a setter gives.
  std::string described(test::Slot set) const {
    return test::describe(read(static_cast<test::Slot>(set + 1)).get());
  }
  /// What is inside the root element of a part; "" when it is empty.
  std::string xml(const char* name) const {
    const std::string all = inspector().canonical(std::string("metadata/") + name + ".xml");
    const std::size_t start = all.find('>') + 1;
    return all.substr(start, all.rfind("</") - start);
  }
  void replaceXml(const char* name, const std::string& children) const {
    inspector().replace(std::string("metadata/") + name + ".xml", "<r>" + children + "</r>");
  }
};

// Configuration.

TEST_F(ListDocumentGateways, AConfigurationWithoutPathsIsAnEmptyRoot) {
  const HostArray empty = test::makeConfiguration(makeCell({}), makeCell({}));

  EXPECT_EQ(through(test::kSetConfiguration, empty),
            "[1x1 (korvanPaths={1x0} javaClassPaths={1x0})]");
  EXPECT_EQ(xml("configuration"), "");
}

TEST_F(ListDocumentGateways, JavaPathsAloneAreTheRootsOnlyChild) {
  const HostArray java = test::makeConfiguration(nullptr, makeCell({u"a.jar"}));

  EXPECT_EQ(through(test::kSetConfiguration, java),
            "[1x1 (korvanPaths={1x0} javaClassPaths={1x1 'a.jar'})]");
  EXPECT_EQ(xml("configuration"),
            "<javaClassPaths><javaClassPath>a.jar</javaClassPath></javaClassPaths>");
}

TEST_F(ListDocumentGateways, PathsOfAnyShapeBecomeARowWithDoublesAndEmptyOnesKept) {
  const HostArray s = test::makeConfiguration(makeCell({2, 2}, {u"a", u"", u"a", u"d"}),
                                              makeCell({3, 1}, {u"x", u"y", u"x"}));

  EXPECT_EQ(through(test::kSetConfiguration, s),
            "[1x1 (korvanPaths={1x4 'a' '' 'a' 'd'} javaClassPaths={1x3 'x' 'y' 'x'})]");
  EXPECT_EQ(xml("configuration"),
            "<korvanPaths><korvanPath>a</korvanPath><korvanPath></korvanPath><korvanPath>a"
            "</korvanPath><korvanPath>d</korvanPath></korvanPaths><javaClassPaths><javaClassPath>x"
            "</javaClassPath><javaClassPath>y</javaClassPath><javaClassPath>x</javaClassPath>"
            "</javaClassPaths>");
}

TEST_F(ListDocumentGateways, APathThatIsNotTextIsTheHostsErrorAndNothingChanges) {
  const std::string before = packageBytes();
  HostArray paths = makeCell({u"a", u"b"});
  kxSetCell(paths.get(), 1, kxCreateDoubleScalar(1));
  const HostArray number = test::makeConfiguration(std::move(paths), makeCell({}));
  const HostArray text = test::makeConfiguration(makeText(u"a"), makeCell({}));

  EXPECT_EQ(callCleanly(test::kSetConfiguration, 0, {path(), number.get()}).hostError,
            "Korvan:notText");
  EXPECT_EQ(callCleanly(test::kSetConfiguration, 0, {path(), text.get()}).hostError,
            "Korvan:notCell");
  EXPECT_EQ(packageBytes(), before);
}

// Apps.

TEST_F(ListDocumentGateways, NoAppsAreAnEmptyRootAndAnEmptyStructWithItsFields) {
  EXPECT_EQ(through(test::kSetAppInstallList, test::makeTable(test::kAppFields, {})),
            "[1x0 name guid relativePath installByDefault]");
  EXPECT_EQ(xml("applications"), "");
}

TEST_F(ListDocumentGateways, OnlyTheExactWordFalseKeepsAnAppFromBeingInstalled) {
  std::vector<test::Texts> rows;
  for (const char16_t* flag : {u"true", u"", u"TRUE", u"yes", u"False", u"false"}) {
    rows.push_back({u"a", u"g", u"p", flag});
  }

  write(test::kSetAppInstallList, {test::makeTable(test::kAppFields, rows).get()});

  const HostArray apps = read(test::kGetAppInstallList);
  ASSERT_EQ(kxGetNumberOfElements(apps.get()), 6u);
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(test::fieldText(apps.get(), "installByDefault", i), i < 5 ? u"true" : u"false") << i;
  }
}

TEST_F(ListDocumentGateways, InXmlOnlyTheExactWordTrueInstallsAnApp) {
  write(test::kSetAppInstallList, {test::makeTable(test::kAppFields, {}).get()});

  replaceXml("applications",
             "<application name='1' installByDefault='True'><file>p</file></application>"
             "<application name='2'/><application name='3' installByDefault='true'/>");

  EXPECT_EQ(described(test::kSetAppInstallList),
            "[1x3 (name='1' guid='' relativePath='p' installByDefault='false') "
            "(name='2' guid='' relativePath='' installByDefault='false') "
            "(name='3' guid='' relativePath='' installByDefault='true')]");
}

TEST_F(ListDocumentGateways, AppsWithOneGuidAreKeptInLinearOrder) {
  const HostArray s = test::makeTable({2, 2}, test::kAppFields,
                                      {{u"1", u"g", u"a", u"true"},
                                       {u"2", u"g", u"", u"false"},
                                       {u"3", u"g", u"", u"true"},
                                       {u"4", u"g", u"", u"true"}});

  write(test::kSetAppInstallList, {s.get()});

  EXPECT_EQ(xml("applications"),
            "<application guid=\"g\" installByDefault=\"true\" name=\"1\"><file>a</file>"
            "</application><application guid=\"g\" installByDefault=\"false\" name=\"2\"><file>"
            "</file></application><application guid=\"g\" installByDefault=\"true\" name=\"3\">"
            "<file></file></application><application guid=\"g\" installByDefault=\"true\" "
            "name=\"4\"><file></file></application>");
  EXPECT_EQ(kxGetNumberOfElements(read(test::kGetAppInstallList).get()), 4u);
}

// Examples.

TEST_F(ListDocumentGateways, ACategoryWithoutExamplesIsItsNameOnly) {
  EXPECT_EQ(through(test::kSetExamples, test::makeCategory(u"a \"b\"", nullptr)),
            "[1x1 (name='a \"b\"' examples=-)]");
  EXPECT_EQ(xml("examples"), "<exampleCategory name=\"a &quot;b&quot;\"></exampleCategory>");
}

TEST_F(ListDocumentGateways, NoCategoriesAreAnEmptyRootAndAnEmptyStructWithItsFields) {
  EXPECT_EQ(through(test::kSetExamples, test::makeStructArray({1, 0}, {"name", "examples"})),
            "[1x0 name examples]");
  EXPECT_EQ(xml("examples"), "");
}

TEST_F(ListDocumentGateways, AnExampleWithoutFilesIsAnElementWithTwoAttributes) {
  const HostArray s =
      test::makeCategory(u"c", test::makeExamples({1, 1}, {{u"e", u"", u"", u"", u""}}));

  EXPECT_EQ(through(test::kSetExamples, s),
            "[1x1 (name='c' examples=[1x1 (name='e' type='' source='' main='' thumbnail='' "
            "images=-)])]");
  EXPECT_EQ(xml("examples"),
            "<exampleCategory name=\"c\"><example name=\"e\" type=\"\"></example>"
            "</exampleCategory>");
}

TEST_F(ListDocumentGateways, ImagesComeAfterTheOtherFilesEmptyOnesToo) {
  HostArray examples = test::makeExamples({1, 1}, {{u"e", u"t", u"s", u"m", u"n"}});
  test::setField(examples, 0, "images", makeCell({u"1", u""}));

  EXPECT_EQ(through(test::kSetExamples, test::makeCategory(u"c", std::move(examples))),
            "[1x1 (name='c' examples=[1x1 (name='e' type='t' source='s' main='m' thumbnail='n' "
            "images={1x2 '1' ''})])]");
  EXPECT_EQ(xml("examples"),
            "<exampleCategory name=\"c\"><example name=\"e\" type=\"t\"><file type=\"source\">s"
            "</file><file type=\"main\">m</file><file type=\"thumbnail\">n</file>"
            "<file type=\"image\">1</file><file type=\"image\"></file></example>"
            "</exampleCategory>");
}

TEST_F(ListDocumentGateways, FilesInAnotherOrderAreReadAndOddOnesIgnored) {
  write(test::kSetExamples, {test::makeCategory(u"c", nullptr).get()});

  replaceXml("examples",
             "<exampleCategory name='c'><example name='e' type='t'><file type='image'>i</file>"
             "<file type='thumbnail'>n</file><file type='main'>first</file><file type='Source'>no"
             "</file><file>no</file><file type='source'>s</file><file type='main'>second</file>"
             "</example></exampleCategory>");

  EXPECT_EQ(described(test::kSetExamples),
            "[1x1 (name='c' examples=[1x1 (name='e' type='t' source='s' main='second' "
            "thumbnail='n' images={1x1 'i'})])]");
}

TEST_F(ListDocumentGateways, ExamplesOfAnyShapeAreReadInLinearOrder) {
  std::vector<test::Texts> rows;
  for (const char16_t* name : {u"1", u"2", u"3", u"4"}) rows.push_back({name, u"", u"", u"", u""});

  write(test::kSetExamples, {test::makeCategory(u"c", test::makeExamples({2, 2}, rows)).get()});

  EXPECT_EQ(xml("examples"),
            "<exampleCategory name=\"c\"><example name=\"1\" type=\"\"></example>"
            "<example name=\"2\" type=\"\"></example><example name=\"3\" type=\"\"></example>"
            "<example name=\"4\" type=\"\"></example></exampleCategory>");
}

TEST_F(ListDocumentGateways, AnErrorDeepInsideTheExamplesChangesNothing) {
  const std::string before = packageBytes();
  HostArray examples =
      test::makeExamples({1, 2}, {{u"1", u"", u"", u"", u""}, {u"2", u"", u"", u"", u""}});
  HostArray images = makeCell({u"a", u"b"});
  kxSetCell(images.get(), 1, nullptr);
  test::setField(examples, 1, "images", std::move(images));
  const HostArray hole = test::makeCategory(u"c", std::move(examples));
  HostArray incomplete = test::makeExamples({1, 1}, {{u"1", u"", u"", u"", u""}});
  kxSetField(incomplete.get(), 0, "thumbnail", nullptr);
  const HostArray missing = test::makeCategory(u"c", std::move(incomplete));
  const HostArray number = test::makeCategory(u"c", test::makeNumber(1));

  EXPECT_EQ(callCleanly(test::kSetExamples, 0, {path(), hole.get()}).hostError,
            "Korvan:missingValue");
  EXPECT_EQ(callCleanly(test::kSetExamples, 0, {path(), missing.get()}).hostError,
            "Korvan:missingValue");
  EXPECT_EQ(callCleanly(test::kSetExamples, 0, {path(), number.get()}).hostError,
            "Korvan:notStruct");
  EXPECT_EQ(packageBytes(), before);
}

// Revisions.

TEST_F(ListDocumentGateways, NoRevisionsAreAnEmptyRootAndAnEmptyStructWithItsFields) {
  EXPECT_EQ(
      through(test::kSetRevisionHistory, test::makeTable({"date", "version", "description"}, {})),
      "[1x0 date version description]");
  EXPECT_EQ(xml("revisionHistory"), "");
}

TEST_F(ListDocumentGateways, RevisionsKeepTheirOrderTheirDatesAndTheirMarkup) {
  const HostArray s = test::makeTable({"date", "version", "description"},
                                      {{u"today", u"2", u"one\r\n\ttwo <b>&amp;</b> ]]>"},
                                       {u"2015-13-45", u"1", u""},
                                       {u"", u"3", u"x"}});

  EXPECT_EQ(through(test::kSetRevisionHistory, s), test::describe(s.get()));
  EXPECT_EQ(xml("revisionHistory"),
            "<revision date=\"today\" version=\"2\"><description>one&#xD;\n\ttwo &lt;b&gt;&amp;amp;"
            "&lt;/b&gt; ]]&gt;</description></revision><revision date=\"2015-13-45\" "
            "version=\"1\"><description></description></revision><revision date=\"\" "
            "version=\"3\"><description>x</description></revision>");
}

TEST_F(ListDocumentGateways, ARevisionWithoutADateOrDescriptionHasEmptyOnes) {
  write(test::kSetRevisionHistory, {test::sampleHistory().get()});

  replaceXml("revisionHistory", "<revision version='1'/>");

  EXPECT_EQ(described(test::kSetRevisionHistory), "[1x1 (date='' version='1' description='')]");
}

// Requirements.

TEST_F(ListDocumentGateways, NoRequirementsAreAnEmptyRootAndTwoUnsetFields) {
  const std::string none = "[1x1 (productDependency=- supportPackageDependency=-)]";
  const HostArray empty =
      test::makeRequirements(test::makeTable(test::kDependencyFields, {}), makeCell({}));

  EXPECT_EQ(through(test::kSetSystemRequirements, test::makeRequirements(nullptr, nullptr)), none);
  EXPECT_EQ(xml("systemRequirements"), "");
  EXPECT_EQ(through(test::kSetSystemRequirements, empty), none);
  EXPECT_EQ(xml("systemRequirements"), "");
}

TEST_F(ListDocumentGateways, SupportPackagesAloneAreTheRootsOnlyChild) {
  const HostArray s = test::makeRequirements(
      nullptr, test::makeTable(test::kDependencyFields, {{u"a", u"", u"c"}}));

  EXPECT_EQ(through(test::kSetSystemRequirements, s), test::describe(s.get()));
  EXPECT_EQ(xml("systemRequirements"),
            "<requiredSupportPackages><supportPackage identifier=\"c\" name=\"a\" version=\"\">"
            "</supportPackage></requiredSupportPackages>");
}

TEST_F(ListDocumentGateways, ThreeProductsComeBackAsThreeElements) {
  const HostArray s = test::makeRequirements(
      test::makeTable(test::kDependencyFields,
                      {{u"1", u"", u""}, {u"2", u"", u""}, {u"3", u"v", u"i"}}),
      nullptr);

  EXPECT_EQ(through(test::kSetSystemRequirements, s), test::describe(s.get()));
  EXPECT_EQ(xml("systemRequirements"),
            "<requiredProducts><product identifier=\"\" name=\"1\" version=\"\"></product>"
            "<product identifier=\"\" name=\"2\" version=\"\"></product>"
            "<product identifier=\"i\" name=\"3\" version=\"v\"></product></requiredProducts>");
}

TEST_F(ListDocumentGateways, AListElementWithoutProductsIsLeftOutWhenWrittenAgain) {
  write(test::kSetSystemRequirements, {test::sampleRequirements().get()});
  replaceXml("systemRequirements",
             "<requiredProducts/><requiredSupportPackages><product name='x'/>"
             "</requiredSupportPackages>");
  const HostArray s = read(test::kGetSystemRequirements);

  EXPECT_EQ(through(test::kSetSystemRequirements, s),
            "[1x1 (productDependency=- supportPackageDependency=-)]");
  EXPECT_EQ(xml("systemRequirements"), "");
}

TEST_F(ListDocumentGateways, OfARequirementsArrayOnlyTheFirstElementIsStored) {
  const HostArray s =
      test::makeStructArray({1, 2}, {"productDependency", "supportPackageDependency"});
  test::setField(s, 1, "productDependency",
                 test::makeTable(test::kDependencyFields, {{u"second", u"", u""}}));

  EXPECT_EQ(through(test::kSetSystemRequirements, s),
            "[1x1 (productDependency=- supportPackageDependency=-)]");
}

// Size.

TEST_F(ListDocumentGateways, TenThousandRevisionsComeBack) {
  std::vector<test::Texts> rows;
  for (int i = 0; i < 10000; ++i) {
    const std::string number = std::to_string(i);
    rows.push_back({std::u16string(number.begin(), number.end()), u"v", u"d"});
  }
  const HostArray s = test::makeTable({"date", "version", "description"}, rows);

  EXPECT_EQ(through(test::kSetRevisionHistory, s), test::describe(s.get()));
}

TEST_F(ListDocumentGateways, TwoThousandExamplesComeBack) {
  std::vector<test::Texts> rows(2000, {u"n", u"t", u"s", u"m", u"i"});
  const HostArray s = test::makeCategory(u"c", test::makeExamples({1, rows.size()}, rows));

  EXPECT_EQ(through(test::kSetExamples, s), test::describe(s.get()));
}

}  // namespace
