// SPDX-License-Identifier: MIT
#include "opc/plservices/FileTreeTable.h"

#include <algorithm>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/DocumentPieces.h"
#include "opc/model/PartName.h"
#include "opc/plservices/SchemaRoot.h"
#include "opc/plservices/TreePath.h"

namespace opc::plservices {
namespace {

using model::XmlNode;

[[noreturn]] void refuse(const std::string& why) {
  throw FormatError("PN-13", why);
}

std::string requireAttribute(const XmlNode& element, const char16_t* name) {
  const model::XmlAttribute* attribute = element.findAttribute(name);
  if (attribute == nullptr) {
    refuse("an entry of the file tree has no attribute '" + toUtf8(name) + "'");
  }
  return toUtf8(attribute->value);
}

std::string readPath(const XmlNode& element) {
  std::string path = model::percentDecodePath(requireAttribute(element, FileTreeTable::kPath));
  if (const char* fault = findPathFault(path)) {
    refuse("path '" + path + "' is not valid in a file tree: " + fault);
  }
  if (FileTreeTable::entrySize(path) == 0) refuse("path '" + path + "' is too long");
  return path;
}

class TableReader final : public model::DocumentPieces {
 public:
  explicit TableReader(FileTreeTable& table) : table_(table) {}

  void startRoot(const XmlNode& root) override {
    const std::u16string space = FileTreeTable::namespaceURI();
    if (root.name.namespaceUri == space && root.name.localName == FileTreeTable::kRoot) return;
    refuse("the root element is not 'fileTree' of the namespace '" + toUtf8(space) + "'");
  }

  void takeChild(const XmlNode& child) override {
    if (!child.isElement()) return;
    const std::u16string_view kind = child.name.localName;
    if (kind == FileTreeTable::kFolder) {
      table_.folders.push_back(readPath(child));
    } else if (kind == FileTreeTable::kFile) {
      table_.files.push_back({readPath(child), requireAttribute(child, FileTreeTable::kPart)});
    } else {
      // It may be a file, and its loss would not be noticed.
      refuse("the file tree has an entry that is neither a file nor a folder");
    }
  }

 private:
  FileTreeTable& table_;
};

// ASCII, of which XML attributes take all but one character as it is.
void appendAttribute(std::string& xml, const char16_t* name, const std::string& value) {
  xml += ' ' + toUtf8(name) + "=\"";
  for (const char c : value) {
    if (c == '&') {
      xml += "&amp;";
    } else {
      xml += c;
    }
  }
  xml += '"';
}

// Hands on what has been written from time to time.
void writeEntry(std::string& xml, const char16_t* name, const std::string* part,
                const std::string& path, OutputStream& stream) {
  constexpr std::size_t kBlock = 65536;
  xml += '<' + toUtf8(name);
  if (part != nullptr) appendAttribute(xml, FileTreeTable::kPart, *part);
  appendAttribute(xml, FileTreeTable::kPath, model::percentEncodePath(path));
  xml += "/>";
  if (xml.size() < kBlock) return;
  stream.write(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  xml.clear();
}

}  // namespace

std::u16string FileTreeTable::namespaceURI() {
  return SchemaRoot + u"/korvan/addon/2014/fileTree";
}

FileTreeTable FileTreeTable::read(InputStream& stream) {
  FileTreeTable table;
  TableReader reader(table);
  model::parsePieces(stream, reader);
  return table;
}

void FileTreeTable::write(OutputStream& stream) {
  std::sort(folders.begin(), folders.end());
  std::sort(files.begin(), files.end(),
            [](const File& a, const File& b) { return a.path < b.path; });
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>";
  xml += '<' + toUtf8(kRoot) + " xmlns=\"" + toUtf8(namespaceURI()) + "\">";
  for (const std::string& folder : folders) writeEntry(xml, kFolder, nullptr, folder, stream);
  for (const File& file : files) writeEntry(xml, kFile, &file.partName, file.path, stream);
  xml += "</" + toUtf8(kRoot) + '>';
  stream.write(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
}

std::uint64_t FileTreeTable::entrySize(std::string_view path) {
  // Elements, attribute names and a made-up part name.
  constexpr std::uint64_t kMarkup = 120;
  const std::string encoded = model::percentEncodePath(path);
  const auto ampersands = std::count(encoded.begin(), encoded.end(), '&');
  const std::uint64_t size = encoded.size() + 4 * static_cast<std::uint64_t>(ampersands);
  return size > kMaxEncodedPath ? 0 : size + kMarkup;
}

}  // namespace opc::plservices
