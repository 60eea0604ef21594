// SPDX-License-Identifier: MIT
#include "opc/model/detail/XmlWriting.h"

namespace opc::model::detail {
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

}  // namespace

void appendAttribute(std::string& out, std::string_view name, std::string_view value) {
  out += ' ';
  out += name;
  out += "=\"";
  for (const char c : value) appendEscaped(out, c);
  out += '"';
}

}  // namespace opc::model::detail
