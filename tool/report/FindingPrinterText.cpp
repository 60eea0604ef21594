// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <string>

#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "tool/report/FindingPrinter.h"

namespace tool::report {

using addon::checks::PackageVerdict;
using opc::checks::Finding;
using opc::checks::FindingId;
using opc::checks::idOf;

namespace {

// "PART:LINE: MESSAGE", as far as they are set.
std::string withPlace(const Finding& finding) {
  if (finding.part.empty()) return finding.message;
  const std::string line = finding.line == 0 ? "" : fmt::format(":{}", finding.line);
  return fmt::format("{}{}: {}", finding.part, line, finding.message);
}

std::string unlistedText(std::size_t count) {
  return fmt::format("{} more of these are not shown", count);
}

/// One line, whatever the names hold.
std::string lineOf(const PackageVerdict& verdict, FindingId id, const std::string& text) {
  return fmt::format("{}: {} {}: {}\n", opc::printable(verdict.file), nameOf(id.severity),
                     idOf(id.number), opc::printable(text));
}

class TextPrinter final : public FindingPrinter {
 public:
  explicit TextPrinter(Output& output) : output_(output) {}

  void print(const PackageVerdict& verdict) override { output_.write(describeFindings(verdict)); }

 private:
  Output& output_;
};

void replaceAll(std::string& text, std::string_view what, std::string_view with) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
}

std::string escapeMessage(std::string text) {
  replaceAll(text, "%", "%25");
  replaceAll(text, "\r", "%0D");
  replaceAll(text, "\n", "%0A");
  return text;
}

std::string escapeProperty(std::string text) {
  text = escapeMessage(std::move(text));
  replaceAll(text, ":", "%3A");
  replaceAll(text, ",", "%2C");
  return text;
}

/// What GitHub makes annotations of.
class GithubPrinter final : public FindingPrinter {
 public:
  explicit GithubPrinter(Output& output) : output_(output) {}

  void print(const PackageVerdict& verdict) override {
    if (!verdict.failure.empty()) {
      output_.write(fmt::format("::error file={}::{}\n", escapeProperty(verdict.file),
                                escapeMessage(opc::printable(verdict.failure))));
    }
    for (const Finding& finding : verdict.findings) {
      printCommand(verdict, finding.id, withPlace(finding));
    }
    for (const auto& [id, count] : verdict.unlisted) {
      printCommand(verdict, id, unlistedText(count));
    }
  }

 private:
  void printCommand(const PackageVerdict& verdict, FindingId id, const std::string& text) {
    output_.write(fmt::format("::{} file={},title={}::{}\n", nameOf(id.severity),
                              escapeProperty(verdict.file), idOf(id.number),
                              escapeMessage(opc::printable(text))));
  }

  Output& output_;
};

}  // namespace

std::string describeFindings(const PackageVerdict& verdict) {
  std::string lines;
  for (const Finding& finding : verdict.findings) {
    lines += lineOf(verdict, finding.id, withPlace(finding));
  }
  for (const auto& [id, count] : verdict.unlisted) {
    lines += lineOf(verdict, id, unlistedText(count));
  }
  return lines;
}

std::unique_ptr<FindingPrinter> makeTextPrinter(Output& output) {
  return std::make_unique<TextPrinter>(output);
}

std::unique_ptr<FindingPrinter> makeGithubPrinter(Output& output) {
  return std::make_unique<GithubPrinter>(output);
}

}  // namespace tool::report
