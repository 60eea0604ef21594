// SPDX-License-Identifier: MIT
#include "tool/Guid.h"

#include <uuid/uuid.h>

#include <array>

namespace tool {

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

}  // namespace tool
