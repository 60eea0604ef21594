// SPDX-License-Identifier: MIT
#include "opc/plservices/FileTreeTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "opc/Exception.h"
#include "opc/Streams.h"

namespace {

using opc::plservices::FileTreeTable;
using testing::ElementsAre;
using testing::HasSubstr;

std::string write(FileTreeTable table) {
  opc::TextOutputStream stream;
  table.write(stream);
  return stream.text;
}

FileTreeTable read(const std::string& xml) {
  opc::MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  return FileTreeTable::read(stream);
}

std::string errorOf(const std::string& xml) {
  try {
    read(xml);
  } catch (const opc::Exception& error) {
    return error.what();
  }
  return "no error";
}

std::string document(const std::string& entries) {
  return "<?xml version=\"1.0\"?><fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/"
         "2014/fileTree\">" +
         entries + "</fileTree>";
}

TEST(FileTreeTable, IsWrittenSortedWithPathsPercentEncoded) {
  FileTreeTable table;
  table.folders = {"z", "a b/c"};
  table.files = {{"x.", "/metadata/fileTree/2"}, {"A.m", "/metadata/fileTree/1.m"}};

  const std::string xml = write(table);

  EXPECT_THAT(xml, HasSubstr("fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/"
                             "fileTree\">"
                             "<folder path=\"a%20b/c\"/><folder path=\"z\"/>"
                             "<file part=\"/metadata/fileTree/1.m\" path=\"A.m\"/>"
                             "<file part=\"/metadata/fileTree/2\" path=\"x.\"/></fileTree>"));
}

TEST(FileTreeTable, EveryPathComesBackAsItWent) {
  const std::vector<std::string> paths{"a\nb",
                                       "\x01\x1f\x7f",
                                       "\xc2\x85",
                                       "a\\b",
                                       "%25%0a",
                                       "&<>\"'",
                                       "a/b. ",
                                       " ",
                                       "\xc3\xa9",
                                       "e\xcc\x81",
                                       "\xf0\x9f\x98\x80",
                                       "\xef\xbf\xbe",
                                       std::string(255, 'x'),
                                       "_rels/.rels"};
  FileTreeTable table;
  for (const std::string& path : paths) table.files.push_back({path, "/p"});
  table.folders = paths;

  const FileTreeTable back = read(write(table));

  std::vector<std::string> files;
  for (const auto& file : back.files) files.push_back(file.path);
  EXPECT_THAT(files, testing::UnorderedElementsAreArray(paths));
  EXPECT_THAT(back.folders, testing::UnorderedElementsAreArray(paths));
}

TEST(FileTreeTable, EscapesAreDecodedExactlyOnce) {
  EXPECT_THAT(read(document("<folder path=\"a%2541\"/>")).folders, ElementsAre("a%41"));
}

TEST(FileTreeTable, FilesKeepTheirParts) {
  const FileTreeTable table = read(document("<file path=\"a\" part=\"/b\"/>"));

  ASSERT_EQ(table.files.size(), 1u);
  EXPECT_EQ(table.files[0].path, "a");
  EXPECT_EQ(table.files[0].partName, "/b");
}

struct BadTable {
  const char* entries;
  const char* why;
};

class FileTreeTableRefused : public testing::TestWithParam<BadTable> {};

TEST_P(FileTreeTableRefused, NamesWhatIsWrong) {
  EXPECT_THAT(errorOf(document(GetParam().entries)), HasSubstr(GetParam().why));
}

INSTANTIATE_TEST_SUITE_P(
    Entries, FileTreeTableRefused,
    testing::Values(
        BadTable{"<folder/>", "'path'"}, BadTable{"<file path=\"a\"/>", "'part'"},
        BadTable{"<file part=\"/a\"/>", "'path'"},
        BadTable{"<folder path=\"a/../b\"/>", "'a/../b'"}, BadTable{"<folder path=\"\"/>", "empty"},
        BadTable{"<folder path=\"/a\"/>", "'/a'"}, BadTable{"<folder path=\"a%00\"/>", "NUL"},
        BadTable{"<folder path=\"a%ff\"/>", "UTF-8"}, BadTable{"<folder path=\"a%2\"/>", "a%2"},
        BadTable{"<link path=\"a\"/>", "neither a file nor a folder"}));

TEST(FileTreeTable, AnotherRootElementIsRefused) {
  EXPECT_THAT(errorOf("<fileTree/>"), HasSubstr("root element"));
  EXPECT_THAT(errorOf("<x xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/fileTree\"/>"),
              HasSubstr("root element"));
}

TEST(FileTreeTable, APathThatNoReaderWouldTakeIsRefused) {
  const std::string path(FileTreeTable::kMaxEncodedPath + 1, 'x');

  EXPECT_EQ(FileTreeTable::entrySize(path), 0u);
  EXPECT_THAT(errorOf(document("<folder path=\"" + path + "\"/>")), HasSubstr("too long"));
}

TEST(FileTreeTable, AnEntryTakesNoMoreThanItsDeclaredSize) {
  for (const std::string& path : {std::string("a&b d"), std::string(100, '&')}) {
    FileTreeTable table;
    const std::size_t without = write(table).size();
    table.folders = {path};

    EXPECT_LE(write(table).size() - without, FileTreeTable::entrySize(path)) << path;
  }
}

}  // namespace
