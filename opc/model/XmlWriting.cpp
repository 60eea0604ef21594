// SPDX-License-Identifier: MIT
#include "opc/model/XmlWriting.h"

#include "opc/model/DomText.h"

namespace opc::model {
namespace {

void appendEscaped(std::string& out, char c) {
  switch (c) {
    case '&':
      out += "&amp;";
      break;
    case '<':
      out += "&lt;";
      break;
    case '>':
      out += "&gt;";
      break;
    case '"':
      out += "&quot;";
      break;
    case '\t':
      out += "&#9;";
      break;
    case '\n':
      out += "&#10;";
      break;
    case '\r':
      out += "&#13;";
      break;
    default:
      out += c;
  }
}

bool isLeadSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool isTrailSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

}  // namespace

void appendAttribute(std::string& out, std::string_view name, std::string_view value) {
  out += ' ';
  out += name;
  out += "=\"";
  for (const char c : value) appendEscaped(out, c);
  out += '"';
}

bool isXmlText(std::u16string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t unit = text[at];
    if (isLeadSurrogate(unit)) {
      if (++at == text.size() || !isTrailSurrogate(text[at])) return false;
    } else if (isTrailSurrogate(unit) || unit >= 0xFFFE || (unit < 0x20 && !isXmlSpace(unit))) {
      return false;
    }
  }
  return true;
}

}  // namespace opc::model
