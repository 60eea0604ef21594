// SPDX-License-Identifier: MIT
#include "addon/checks/Guid.h"

#include "opc/Text.h"
#include "opc/model/DomText.h"

namespace addon::checks {

std::string plainGuid(std::u16string_view text) {
  text = opc::model::trimXmlSpace(text);
  if (text.size() >= 2 && text.front() == u'{' && text.back() == u'}') {
    text = text.substr(1, text.size() - 2);
  }
  return opc::toLowerAscii(opc::toUtf8ForDisplay(text));
}

bool isGuid(std::u16string_view text) {
  constexpr std::string_view kForm = "00000000-0000-0000-0000-000000000000";
  const std::string plain = plainGuid(text);
  if (plain.size() != kForm.size()) return false;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const char c = plain[i];
    const bool isDigit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
    if (kForm[i] == '0' ? !isDigit : c != '-') return false;
  }
  return true;
}

}  // namespace addon::checks
