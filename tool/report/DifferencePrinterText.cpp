// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "opc/Streams.h"
#include "opc/Text.h"
#include "text/UnifiedHunks.h"
#include "tool/process/Interrupt.h"
#include "tool/report/DifferencePrinter.h"

namespace tool::report {

using addon::comparison::Change;
using addon::comparison::ComparedPackage;
using addon::comparison::DocumentDifference;
using addon::comparison::DocumentValue;
using addon::comparison::FieldDifference;
using addon::comparison::FileDifference;
using addon::comparison::Item;
using addon::comparison::openItem;

namespace {

using text::HunkLine;
using text::Lines;

// A text beyond these is not one that anybody reads line by line.
constexpr std::uint64_t kMaxTextSize = std::uint64_t{16} << 20;
constexpr std::ptrdiff_t kMaxLines = 1 << 20;

constexpr std::size_t kMaxValueLength = 60;
constexpr std::string_view kEllipsis = "…";

constexpr std::string_view kRed = "31";
constexpr std::string_view kGreen = "32";
constexpr std::string_view kYellow = "33";
constexpr std::string_view kCyan = "36";

/// The place of a character's first byte at `at` or before.
std::size_t characterBegin(std::string_view utf8, std::size_t at) {
  return opc::clipUtf8(utf8, at).size();
}

/// What is left of a long value without `skipped` bytes at its front.
std::string shorten(std::string_view value, std::size_t skipped) {
  const std::size_t begin = characterBegin(value, skipped);
  std::string text(begin > 0 ? kEllipsis : "");
  const std::string_view rest = value.substr(begin);
  if (rest.size() <= kMaxValueLength) return text.append(rest);
  return text.append(rest.substr(0, characterBegin(rest, kMaxValueLength))).append(kEllipsis);
}

/// How much of the front of two long values is the same and need not be shown twice.
std::size_t dispensable(std::string_view a, std::string_view b) {
  constexpr std::size_t kShownBefore = 20;
  if (std::max(a.size(), b.size()) <= kMaxValueLength) return 0;
  const auto [end, other] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  const auto same = static_cast<std::size_t>(end - a.begin());
  return same > kShownBefore ? same - kShownBefore : 0;
}

std::string describeSizes(const FileDifference& file) {
  const bool areBoth = file.a != nullptr && file.b != nullptr;
  const std::uint64_t after = file.item().info.size;
  return describeSizeChange(areBoth ? file.a->info.size : after, after);
}

/// A file's content to be shown by lines, if it is such.
struct FileText {
  std::string content;
  Lines lines;
  bool isBinary = false;
  bool isTooLarge = false;
};

FileText readText(const ComparedPackage& package, const Item* item) {
  FileText text;
  if (item == nullptr) return text;
  text.isTooLarge = item->info.size > kMaxTextSize;
  if (text.isTooLarge) return text;
  text.content = opc::StreamHelper::readToEnd(*openItem(*package.package, *item));
  text.isBinary = text.content.find('\0') != std::string::npos;
  if (text.isBinary) return text;
  text.isTooLarge = std::count(text.content.begin(), text.content.end(), '\n') >= kMaxLines;
  if (!text.isTooLarge) text.lines = text::splitLines(text.content);
  return text;
}

bool isNothing(const DocumentValue& value) {
  return std::holds_alternative<std::monostate>(value);
}

/// As compact JSON.
std::string textOf(const DocumentValue& value) {
  std::string text;
  text::JsonWriter json(text, text::JsonWriter::Layout::Compact);
  writeValue(value, json);
  return text;
}

class Printer {
 public:
  Printer(const ComparisonReport& report, bool isColored, Output& output)
      : report_(report), isColored_(isColored), output_(output) {}

  void printProperties() {
    for (const FieldDifference& field : report_.differences.properties) {
      printField("properties." + field.path, field);
    }
  }

  void printDocuments() {
    for (const DocumentDifference& document : report_.differences.documents) {
      if (document.change == Change::Added) print(kGreen, fmt::format("{}: added", document.name));
      if (document.change == Change::Removed)
        print(kRed, fmt::format("{}: removed", document.name));
      const bool isOnlyWritten = document.change == Change::Changed && document.fields.empty();
      if (isOnlyWritten) {
        print(kYellow, fmt::format("{}: the part differs, its fields are the same", document.name));
      }
      for (const FieldDifference& field : document.fields) printField(field.path, field);
    }
  }

  void printFiles(bool withLines) {
    for (const FileDifference& file : report_.differences.files.list) {
      process::Interrupt::check();
      printFile(file);
      const bool isPart = file.path.starts_with('/');  // no path for 'patch'
      if (withLines && !isPart && file.change != Change::Moved && !file.item().isFolder())
        printLines(file);
    }
  }

 private:
  /// A line, whatever the names in it: one with line ends could else pass for a part of a patch.
  void print(std::string_view color, std::string_view line) {
    const std::string text = opc::printable(line);
    output_.write(isColored_ ? fmt::format("\x1b[{}m{}\x1b[0m\n", color, text) : text + "\n");
  }

  void printField(std::string_view path, const FieldDifference& field) {
    const std::string a = textOf(field.a);
    const std::string b = textOf(field.b);
    const bool isElement = path.ends_with(']');
    if (isElement && isNothing(field.a)) {
      print(kGreen, fmt::format("{}: added {}", path, shorten(b, 0)));
    } else if (isElement && isNothing(field.b)) {
      print(kRed, fmt::format("{}: removed {}", path, shorten(a, 0)));
    } else {
      const std::size_t skipped = dispensable(a, b);
      print(kYellow, fmt::format("{}: {} -> {}", path, shorten(a, skipped), shorten(b, skipped)));
    }
  }

  void printFile(const FileDifference& file) {
    const std::string sizes = file.item().isFolder() ? "" : "  " + describeSizes(file);
    switch (file.change) {
      case Change::Added:
        return print(kGreen, fmt::format("+ {}{}", file.path, sizes));
      case Change::Removed:
        return print(kRed, fmt::format("- {}{}", file.path, sizes));
      case Change::Changed:
        return print(kYellow, fmt::format("~ {}{}", file.path, sizes));
      case Change::Moved:
        return print(kCyan, fmt::format("> {} -> {}{}", file.from, file.path, sizes));
    }
  }

  void printLines(const FileDifference& file) {
    const FileText a = readText(report_.a, file.a);
    const FileText b = readText(report_.b, file.b);
    const std::string aName = file.a == nullptr ? "/dev/null" : "a/" + file.path;
    const std::string bName = file.b == nullptr ? "/dev/null" : "b/" + file.path;
    if (a.isTooLarge || b.isTooLarge) {
      return print(kYellow, fmt::format("Files {} and {} differ, too large to show their lines",
                                        aName, bName));
    }
    if (a.isBinary || b.isBinary) {
      return print(kYellow, fmt::format("Binary files {} and {} differ", aName, bName));
    }
    const auto blocks = text::compareLines(a.lines, b.lines);
    if (blocks.empty()) return;  // an empty file
    printLine("", "--- " + text::patchName(aName));
    printLine("", "+++ " + text::patchName(bName));
    text::visitHunks(a.lines, b.lines, blocks,
                     [this](HunkLine kind, std::string_view text) { printHunkLine(kind, text); });
  }

  void printHunkLine(HunkLine kind, std::string_view text) {
    switch (kind) {
      case HunkLine::Header:
        return printLine(kCyan, text);
      case HunkLine::Same:
        return printLine("", text, " ");
      case HunkLine::Removed:
        return printLine(kRed, text, "-");
      case HunkLine::Added:
        return printLine(kGreen, text, "+");
      case HunkLine::NoLineEnd:
        return printLine("", text);
    }
  }

  /// A line of a file as it is, but that on a terminal nothing but tabs controls it.
  void printLine(std::string_view color, std::string_view text, std::string_view mark = "") {
    const bool isColored = isColored_ && !color.empty();
    if (isColored) output_.write(fmt::format("\x1b[{}m", color));
    output_.write(mark);
    if (output_.isTerminal()) {
      for (std::size_t tab = text.find('\t'); tab != std::string_view::npos;
           tab = text.find('\t')) {
        output_.write(output_.shown(text.substr(0, tab)) + "\t");
        text.remove_prefix(tab + 1);
      }
      output_.write(output_.shown(text));
    } else {
      output_.write(text);
    }
    output_.write(isColored ? "\x1b[0m\n" : "\n");
  }

  const ComparisonReport& report_;
  bool isColored_;
  Output& output_;
};

}  // namespace

void printDifferences(const ComparisonReport& report, bool withLines, bool isColored,
                      Output& output) {
  Printer printer(report, isColored, output);
  printer.printProperties();
  printer.printDocuments();
  printer.printFiles(withLines);
}

}  // namespace tool::report
