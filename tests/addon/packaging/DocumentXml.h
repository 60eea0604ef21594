// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "opc/Text.h"
#include "tests/support/PackageInspector.h"
#include "tests/support/Paths.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

/// The canonical form of XML text, made by Python.
inline std::string canonicalXmlText(const std::u16string& xml) {
  const TemporaryFolder folder;
  writeFile(folder / "document.xml", opc::toUtf8(xml));
  return canonicalXml(folder / "document.xml");
}

/// A file of tests/data, as text.
inline std::u16string dataText(const std::string& name) {
  return opc::fromUtf8(readFile(sourcePath("tests/data/" + name)));
}

inline std::string canonicalData(const std::string& name) {
  return canonicalXml(sourcePath("tests/data/" + name));
}

}  // namespace test
