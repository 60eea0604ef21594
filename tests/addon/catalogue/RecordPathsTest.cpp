// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "addon/catalogue/Record.h"
#include "addon/catalogue/SitePaths.h"
#include "text/Sha256.h"

namespace {

using addon::catalogue::parseRecord;
using addon::catalogue::Record;
using addon::catalogue::toLine;

const std::string kHash(64, 'a');
const std::string kOtherHash(64, 'b');

Record recordOf(const std::string& guid, const std::string& version) {
  Record record;
  record.guid = guid;
  record.version = version;
  record.sha256 = kHash;
  record.package = "packages/" + kHash + ".kraddon";
  record.page = addon::catalogue::pageFolder(guid, version) + "/index.html";
  return record;
}

void expectRefused(std::string Record::*member, const std::string& path) {
  Record record = recordOf("AB", "1.0");
  record.*member = path;
  EXPECT_THROW(parseRecord(toLine(record)), text::JsonError) << path;
}

TEST(RecordPaths, ThoseOfASiteAreRead) {
  for (const std::string guid : {"AB", "ab", "../x", "gr\xC3\xB6\xC3\x9F", "a\nb"}) {
    for (const std::string version : {"1.0", "1/2", ".."}) {
      Record record = recordOf(guid, version);
      EXPECT_EQ(parseRecord(toLine(record)).page, record.page);
      record.screenshot = addon::catalogue::pageFolder(guid, version) + "/" + kOtherHash + ".png";
      EXPECT_EQ(parseRecord(toLine(record)).screenshot, record.screenshot);
    }
  }
}

TEST(RecordPaths, APackageElsewhereIsRefused) {
  for (const std::string& path :
       {std::string(), std::string("../../../../etc/passwd"), std::string("/etc/passwd"),
        "packages/" + kOtherHash + ".kraddon", "packages//" + kHash + ".kraddon",
        "packages/../packages/" + kHash + ".kraddon", "/packages/" + kHash + ".kraddon",
        "packages/" + kHash + ".kraddon/", "packages/" + kHash + ".zip",
        "shards/" + kHash + ".kraddon"}) {
    expectRefused(&Record::package, path);
  }
}

TEST(RecordPaths, APackageIsNamedByAHash) {
  Record record = recordOf("AB", "1.0");
  record.sha256 = "../x";
  record.package = "packages/../x.kraddon";

  EXPECT_THROW(parseRecord(toLine(record)), text::JsonError);
}

TEST(RecordPaths, APageElsewhereIsRefused) {
  for (const std::string path :
       {"", "../precious.txt", "/pages/ab/1.0/index.html", "pages/ab/1.0/../../../index.html",
        "pages/ab/1.0//index.html", "pages/ab/2.0/index.html", "pages/AB/1.0/index.html",
        "pages/ab/1.0/index.html/", "index.html", "root.json"}) {
    expectRefused(&Record::page, path);
  }
}

TEST(RecordPaths, AScreenshotElsewhereIsRefused) {
  for (const std::string& path :
       {std::string("../x.png"), "/pages/ab/1.0/" + kHash + ".png",
        "pages/ab/1.0/../1.0/" + kHash + ".png", "pages/ab/1.0//" + kHash + ".png",
        "pages/ab/2.0/" + kHash + ".png", "pages/ab/1.0/" + kHash, "pages/ab/1.0/" + kHash + ".",
        "pages/ab/1.0/" + kHash + ".p/g", std::string("pages/ab/1.0/index.html"),
        std::string("pages/ab/1.0/..")}) {
    expectRefused(&Record::screenshot, path);
  }
}

}  // namespace
