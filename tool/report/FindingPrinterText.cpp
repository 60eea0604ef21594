// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <string>

#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "tool/report/FindingPrinter.h"

namespace tool::report {

using addon::checks::PackageVerdict;
using addon::checks::SourcePlace;
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

/// "FILE:LINE:COLUMN", as far as they are known.
std::string describePlace(const SourcePlace& place) {
  const auto number = [](std::size_t one) { return one == 0 ? "" : fmt::format(":{}", one); };
  return place.file + number(place.line) + number(place.column);
}

/// One line, whatever the names hold. `where` is a file, or a place in one.
std::string lineOf(const std::string& where, FindingId id, const std::string& text,
                   bool isColored) {
  const bool isError = id.severity == opc::checks::Severity::Error;
  std::string what = fmt::format("{} {}", nameOf(id.severity), idOf(id.number));
  if (isColored) what = fmt::format("\x1b[{}m{}\x1b[0m", isError ? "31" : "33", what);
  return fmt::format("{}: {}: {}\n", opc::printable(where), what, opc::printable(text));
}

class TextPrinter final : public FindingPrinter {
 public:
  TextPrinter(Output& output, bool isColored) : output_(output), isColored_(isColored) {}

  void print(const PackageVerdict& verdict) override {
    output_.write(describeFindings(verdict, isColored_));
  }

 private:
  Output& output_;
  bool isColored_;
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
    const SourcePlace package{verdict.file};
    if (!verdict.failure.empty()) {
      const bool hasPlace = !verdict.failurePlace.file.empty();
      printCommand("error", hasPlace ? verdict.failurePlace : package, "", verdict.failure);
    }
    for (std::size_t i = 0; i < verdict.findings.size(); ++i) {
      const Finding& finding = verdict.findings[i];
      const SourcePlace* place = verdict.placeOf(i);
      printCommand(finding.id, place == nullptr ? package : *place,
                   place == nullptr ? withPlace(finding) : finding.message);
    }
    for (const auto& [id, count] : verdict.unlisted) {
      printCommand(id, package, unlistedText(count));
    }
  }

 private:
  void printCommand(FindingId id, const SourcePlace& place, const std::string& text) {
    printCommand(nameOf(id.severity), place, idOf(id.number), text);
  }

  void printCommand(std::string_view command, const SourcePlace& place, const std::string& title,
                    const std::string& text) {
    std::string properties;
    const auto add = [&](std::string_view name, const std::string& value) {
      if (value.empty() || value == "0") return;
      properties += fmt::format("{}{}={}", properties.empty() ? " " : ",", name, value);
    };
    add("file", escapeProperty(place.file));
    add("line", std::to_string(place.line));
    add("col", std::to_string(place.column));
    add("title", title);
    output_.write(
        fmt::format("::{}{}::{}\n", command, properties, escapeMessage(opc::printable(text))));
  }

  Output& output_;
};

}  // namespace

std::string describeFindings(const PackageVerdict& verdict, bool isColored) {
  std::string lines;
  for (std::size_t i = 0; i < verdict.findings.size(); ++i) {
    const Finding& finding = verdict.findings[i];
    const SourcePlace* place = verdict.placeOf(i);
    lines += place == nullptr
                 ? lineOf(verdict.file, finding.id, withPlace(finding), isColored)
                 : lineOf(describePlace(*place), finding.id, finding.message, isColored);
  }
  for (const auto& [id, count] : verdict.unlisted) {
    lines += lineOf(verdict.file, id, unlistedText(count), isColored);
  }
  return lines;
}

std::unique_ptr<FindingPrinter> makeTextPrinter(Output& output, bool isColored) {
  return std::make_unique<TextPrinter>(output, isColored);
}

std::unique_ptr<FindingPrinter> makeGithubPrinter(Output& output) {
  return std::make_unique<GithubPrinter>(output);
}

}  // namespace tool::report
