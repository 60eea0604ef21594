// SPDX-License-Identifier: MIT
#include "opc/model/InvalidXMLDocument.h"

#include <utility>

namespace opc::model {
namespace {

std::string withPlace(const std::string& why, std::uint64_t line, std::uint64_t column) {
  if (line == 0) return why;
  return why + " (line " + std::to_string(line) + ", column " + std::to_string(column) + ")";
}

}  // namespace

InvalidXMLDocument::InvalidXMLDocument(const std::string& why, std::uint64_t line,
                                       std::uint64_t column, std::string rule)
    : Exception(ErrorCode::InvalidXml, withPlace(why, line, column)),
      line_(line),
      column_(column),
      rule_(std::move(rule)) {}

}  // namespace opc::model
