// SPDX-License-Identifier: MIT
#include "opc/checks/Report.h"

#include <utility>

#include "opc/Text.h"

namespace opc::checks {
namespace {

constexpr std::size_t kMaxPartLength = 1024;     // bytes
constexpr std::size_t kMaxMessageLength = 2048;  // bytes

std::string clipped(std::string_view text, std::size_t most) {
  const std::string_view shown = clipUtf8(text, most);
  std::string result = isUtf8(shown) ? std::string(shown) : printable(shown);
  if (shown.size() < text.size()) result += "...";
  return result;
}

}  // namespace

void Report::add(FindingId id, std::string part, std::string message, std::size_t line,
                 std::string rule) {
  ++(id.severity == Severity::Warning ? warnings_ : errors_);
  if (++counts_[id] > kMaxKept) return;
  findings_.push_back({id, std::move(part), std::move(message), line, std::move(rule)});
}

void Report::addClipped(FindingId id, std::string_view part, std::string_view message,
                        std::string_view rule, std::size_t line) {
  if (!keeps(id)) return add(id, "", "");
  add(id, clipped(part, kMaxPartLength), clipped(message, kMaxMessageLength), line,
      std::string(rule));
}

void Report::addAmbiguous(FindingId id, std::string_view part, std::string_view message,
                          std::string_view rule) {
  if (subject_ == Subject::Addon) id.severity = Severity::Error;
  addClipped(id, part, message, rule);
}

std::size_t Report::count(FindingId id) const {
  const auto found = counts_.find(id);
  return found == counts_.end() ? 0 : found->second;
}

std::size_t Report::count(std::uint16_t number) const {
  return count({number, Severity::Error}) + count({number, Severity::Warning});
}

}  // namespace opc::checks
