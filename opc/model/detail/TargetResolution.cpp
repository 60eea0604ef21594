// SPDX-License-Identifier: MIT
#include "opc/model/detail/TargetResolution.h"

#include <algorithm>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/DomText.h"
#include "opc/model/NameCharacters.h"

namespace opc::model::detail {
namespace {

FormatError invalidTarget(std::u16string_view target, const char* rule, const std::string& why) {
  return {rule, "internal target '" + toUtf8ForDisplay(target) + "': " + why};
}

// The octet that "%41" at `at` stands for, when it is one that needs no escape; else -1.
int needlessEscape(std::string_view text, std::size_t at) {
  if (text[at] != '%' || text.size() - at < 3) return -1;
  const int octet = octetValue(text[at + 1], text[at + 2]);
  return octet >= 0 && octet < 0x80 && isUnreserved(static_cast<char>(octet)) ? octet : -1;
}

// The path with what is frequent and wrong put right.
std::string correct(std::string_view path) {
  std::string result;
  result.reserve(path.size());
  for (std::size_t at = 0; at < path.size(); ++at) {
    const int octet = needlessEscape(path, at);
    if (octet >= 0) {
      result += static_cast<char>(octet);
      at += 2;
    } else if (path[at] == '\\') {
      result += '/';
    } else if (path[at] == ' ') {
      result += "%20";
    } else {
      result += path[at];
    }
  }
  return result;
}

// RFC 3986, 5.2.4, for a path that begins with a slash.
std::string removeDotSegments(std::string_view path) {
  std::string result;
  result.reserve(path.size());
  for (std::size_t start = 1; start <= path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    const std::string_view segment = path.substr(start, end - start);
    const bool last = end == path.size();
    if (segment == "..") result.resize(result.empty() ? 0 : result.rfind('/'));
    if (segment != "." && segment != "..") {
      result += '/';
      result += segment;
    } else if (last) {
      result += '/';
    }
    start = end + 1;
  }
  return result;
}

// RFC 3986, 5.2.3.
std::string merge(std::string_view sourceItemName, std::string_view path) {
  if (path.starts_with('/')) return std::string(path);
  const std::size_t slash = sourceItemName.rfind('/');
  std::string base = "/";
  if (slash != std::string_view::npos) base += sourceItemName.substr(0, slash + 1);
  return base += path;
}

void requireRelative(std::u16string_view target, std::string_view path) {
  if (path.starts_with("//")) throw invalidTarget(target, "RL-7", "it names a host");
  if (path.substr(0, path.find('/')).find(':') != std::string_view::npos) {
    throw invalidTarget(target, "RL-7", "it has a scheme");
  }
}

std::string targetUtf8(std::u16string_view target) {
  try {
    return toUtf8(target);
  } catch (const Exception&) {
    throw invalidTarget(target, "RL-8", "a surrogate stands alone");
  }
}

}  // namespace

ResolvedTarget resolveTarget(std::string_view sourceItemName, std::u16string_view target) {
  const std::u16string_view trimmed = trimXmlSpace(target);
  const std::size_t hash = std::min(trimmed.find(u'#'), trimmed.size());
  const std::u16string_view reference = trimmed.substr(0, hash);
  const std::size_t query = std::min(reference.find(u'?'), reference.size());
  const std::string stored = targetUtf8(reference.substr(0, query));
  const std::string path = correct(stored);
  const bool corrected = path != stored || query != reference.size();
  std::u16string fragment(trimmed.substr(hash));

  requireRelative(target, path);
  if (path.empty()) {
    if (sourceItemName.empty()) throw invalidTarget(target, "RL-7", "it names no part");
    return {PartName::fromItemName(sourceItemName), std::move(fragment), corrected};
  }
  const std::string resolved = removeDotSegments(merge(sourceItemName, path));
  const std::string_view itemName = std::string_view(resolved).substr(1);
  if (const NameFault* fault = findNameFault(itemName)) {
    throw invalidTarget(target, "RL-8",
                        "'" + resolved + "' is not a part name, " + std::string(fault->why));
  }
  return {PartName::fromItemName(itemName), std::move(fragment), corrected};
}

}  // namespace opc::model::detail
