// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "opc/FileDescriptor.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"
#include "opc/zippackage/ZipItemReader.h"
#include "opc/zippackage/detail/OutputFile.h"
#include "opc/zippackage/detail/ZipWriter.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::zippackage {

/// Writes packages with a ZipWriter, and reads them.
class ZipWriters : public testing::Test {
 protected:
  /// Has `body` write a file, and returns its bytes.
  std::string written(const std::function<void(detail::ZipWriter&, detail::OutputFile&)>& body,
                      detail::Zip64Limits limits = {}) {
    const FileDescriptor file(::open(path().c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    detail::OutputFile out(file.get());
    detail::ZipWriter writer(out, limits);
    body(writer, out);
    out.flush();
    return test::readFile(path());
  }

  std::string path() const { return (folder_ / "p.zip").string(); }

  static void add(detail::ZipWriter& writer, const detail::ItemHead& head,
                  const std::string& text) {
    test::TextSource source(text);
    writer.add(head, source, [](std::uint64_t) {});
  }

  std::string contentOf(std::size_t entry) {
    const PackageFile file(path());
    const ZipDirectory directory = ZipDirectory::read(file);
    directory.refuseFaults();
    ZipItemReader reader(file, directory);
    ByteBuffer bytes;
    reader.read(entry, bytes, UINT64_MAX);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }

  std::string pythonTest() const {
    return test::outputOf("/usr/bin/python3 -c \"import zipfile; z = zipfile.ZipFile('" + path() +
                          "'); print(z.testzip(), len(z.infolist()))\"");
  }

  test::TemporaryFolder folder_;
};

}  // namespace opc::zippackage
