// SPDX-License-Identifier: MIT
#include "addon/project/Guid.h"

#include <uuid/uuid.h>

#include <array>

#include "opc/Text.h"

namespace addon::project {
namespace {

std::string toText(const uuid_t& id) {
  std::array<char, UUID_STR_LEN> text{};
  ::uuid_unparse_lower(id, text.data());
  return text.data();
}

}  // namespace

std::string randomGuid() {
  uuid_t id;
  ::uuid_generate_random(id);
  return toText(id);
}

std::string guidOfName(std::string_view name) {
  const std::string text = "kraddon:" + std::string(name);
  uuid_t id;
  ::uuid_generate_sha1(id, *::uuid_get_template("url"), text.data(), text.size());
  return toText(id);
}

std::optional<std::string> guidWithin(const std::string& space, std::string_view name) {
  uuid_t above;
  if (::uuid_parse(space.c_str(), above) != 0) return std::nullopt;
  uuid_t id;
  ::uuid_generate_sha1(id, above, name.data(), name.size());
  return toText(id);
}

std::string plainGuid(std::u16string_view text) {
  constexpr std::u16string_view kSpace = u" \t\r\n";
  while (!text.empty() && kSpace.find(text.front()) != text.npos) text.remove_prefix(1);
  while (!text.empty() && kSpace.find(text.back()) != text.npos) text.remove_suffix(1);
  if (text.size() >= 2 && text.front() == u'{' && text.back() == u'}') {
    text = text.substr(1, text.size() - 2);
  }
  return opc::toLowerAscii(opc::toUtf8ForDisplay(text));
}

bool isGuid(std::u16string_view text) {
  uuid_t id;
  const std::string plain = plainGuid(text);
  return ::uuid_parse_range(plain.data(), plain.data() + plain.size(), id) == 0;
}

}  // namespace addon::project
