// SPDX-License-Identifier: MIT
#include "tool/line/Manual.h"

#include <fmt/format.h>

#include <array>
#include <utility>

#include "opc/Text.h"
#include "text/Lines.h"
#include "tool/line/Help.h"
#include "tool/line/OptionTable.h"
#include "tool/line/Wrapping.h"

namespace tool::line {

namespace {

// The date of the text, not of the build, so that the same sources give the same pages.
constexpr std::string_view kDate = "2026-11-21";

using Entry = std::pair<std::string_view, std::string_view>;

constexpr std::array<Entry, 3> kExitCodes{{
    {"0", "Success. For diff: nothing differs."},
    {"1",
     "Failure. A line on standard error says what failed and why. For verify: a package has an "
     "error. For diff: something differs."},
    {"2", "Wrong usage. A usage summary is printed. For diff: failure."},
}};

constexpr std::array<Entry, 3> kEnvironment{{
    {"SOURCE_DATE_EPOCH",
     "Seconds since 1970, the default of --timestamp. If the time is set, the same input always "
     "gives the same bytes."},
    {"NO_COLOR", "If set and not empty, output is not coloured unless --color says so."},
    {"HOME", "Replaces '~' in paths that the shell completes."},
}};

std::string pageName(std::string_view command) {
  return command.empty() ? "kraddon" : fmt::format("kraddon-{}", command);
}

std::string bold(std::string_view text) {
  return fmt::format("\\fB{}\\fR", escapedForManual(text));
}

std::string italic(std::string_view text) {
  return fmt::format("\\fI{}\\fR", escapedForManual(text));
}

/// Begins a line with each sentence, as the formatter expects, and wraps long ones.
void appendWords(const std::vector<std::string_view>& words, std::string& page) {
  std::vector<std::string> sentence;
  for (const std::string_view word : words) {
    sentence.push_back(escapedForManual(word));
    if (!word.ends_with('.') && word.data() != words.back().data()) continue;
    appendWrapped({sentence.begin(), sentence.end()}, 0, 0, page);
    page += '\n';
    sentence.clear();
  }
}

void appendText(std::string_view text, std::string& page) {
  bool isFirst = true;
  for (const auto& words : paragraphsOf(text)) {
    if (!isFirst) page += ".PP\n";
    isFirst = false;
    appendWords(words, page);
  }
}

void appendSection(std::string_view title, std::string& page) {
  page += fmt::format(".SH {}\n", title);
}

void appendEntry(const std::string& term, std::string_view text, std::string& page) {
  page += fmt::format(".TP\n{}\n", term);
  appendText(text, page);
}

std::string termOf(const OptionSpec& option) {
  std::string term;
  if (option.shortName != 0) term += bold(fmt::format("-{}", option.shortName)) + ", ";
  term += bold(fmt::format("--{}", option.longName));
  if (!option.valueName.empty()) term += " " + italic(option.valueName);
  return term;
}

void appendOptions(std::span<const OptionSpec> options, std::string& page) {
  for (const OptionSpec& option : options) appendEntry(termOf(option), helpOf(option), page);
}

void appendEntries(std::string_view title, std::span<const Entry> entries, std::string& page) {
  appendSection(title, page);
  for (const auto& [term, text] : entries) appendEntry(bold(term), text, page);
}

std::string beginPage(std::string_view pageTitle, char section, std::string_view summary,
                      std::string_view version) {
  std::string title(pageTitle);
  for (char& c : title) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  std::string page =
      fmt::format(".TH {} {} {} \"kraddon {}\" \"{}\"\n.SH NAME\n", escapedForManual(title),
                  section, kDate, version, section == '1' ? "User Commands" : "File Formats");
  const std::string name =
      fmt::format("{} \\- {}", escapedForManual(pageTitle), escapedForManual(summary));
  return page + wrapped(name);
}

void appendExamples(std::span<const ExampleSpec> examples, std::string& page) {
  appendSection("EXAMPLES", page);
  for (const ExampleSpec& example : examples) {
    page += fmt::format(".TP\n{}\n", bold(example.line));
    appendText(example.help, page);
  }
}

/// All pages except the page itself; "" is that of the program.
void appendSeeAlso(std::string_view own, CommandList commands, std::string& page) {
  std::vector<std::string> names;
  if (!own.empty()) names.push_back(pageName({}));
  for (const CommandSpec* command : commands) {
    if (command->name != own) names.push_back(pageName(command->name));
  }
  appendSection("SEE ALSO", page);
  for (std::size_t i = 0; i < names.size(); ++i) {
    page +=
        fmt::format(".BR {} (1){}\n", escapedForManual(names[i]), i + 1 == names.size() ? "" : ",");
  }
}

void endPage(std::string_view command, CommandList commands, std::string& page) {
  appendEntries("EXIT STATUS", kExitCodes, page);
  appendEntries("ENVIRONMENT", kEnvironment, page);
  appendSeeAlso(command, commands, page);
}

}  // namespace

std::string escapedForManual(std::string_view text) {
  std::string escaped;
  // At the beginning of a line they would start a request.
  if (text.starts_with('.') || text.starts_with('\'')) escaped += "\\&";
  for (const char c : text) {
    switch (c) {
      case '\\':
        escaped += "\\e";
        break;
      case '-':
        escaped += "\\-";
        break;
      case '\'':
        escaped += "\\(aq";
        break;
      case '`':
        escaped += "\\(ga";
        break;
      case '^':
        escaped += "\\(ha";
        break;
      case '~':
        escaped += "\\(ti";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string programManual(CommandList commands, std::string_view version) {
  std::string page =
      beginPage(pageName({}), '1', "creates, checks and extracts Korvan add-on packages", version);
  appendSection("SYNOPSIS", page);
  page += fmt::format("{} [{} {}] {} [{}...]\n.br\n{} [{}]\n", bold("kraddon"), bold("-C"),
                      italic("DIR"), italic("COMMAND"), italic("ARGUMENT"), bold("kraddon help"),
                      italic("COMMAND"));
  appendSection("DESCRIPTION", page);
  appendText(kProgramPurpose, page);
  appendSection("COMMANDS", page);
  for (const CommandSpec* command : commands) {
    appendEntry(fmt::format(".BR {} (1)", escapedForManual(pageName(command->name))),
                command->summary, page);
  }
  appendSection("OPTIONS", page);
  appendOptions(leadingOptions(), page);
  appendOptions(commonOptions(), page);
  endPage({}, commands, page);
  return page;
}

std::string manualOf(const CommandSpec& command, CommandList commands, std::string_view version) {
  std::string page = beginPage(pageName(command.name), '1', command.summary, version);
  appendSection("SYNOPSIS", page);
  page += bold(fmt::format("kraddon {}", command.name));
  for (const std::string& word : synopsisOf(command)) page += " " + escapedForManual(word);
  page += '\n';
  appendSection("DESCRIPTION", page);
  appendText(command.description.empty() ? command.summary : command.description, page);
  if (!command.operands.empty()) appendSection("OPERANDS", page);
  for (const OperandSpec& operand : command.operands) {
    appendEntry(italic(operand.name), helpOf(operand), page);
  }
  appendSection("OPTIONS", page);
  appendOptions(command.options, page);
  appendOptions(commonOptions(), page);
  if (!command.examples.empty()) appendExamples(command.examples, page);
  endPage(command.name, commands, page);
  return page;
}

std::string fileManual(std::string_view file, const Topic& topic,
                       const std::vector<TopicSection>& more, std::string_view version) {
  std::string page = beginPage(file, '5', topic.summary, version);
  std::vector<TopicSection> sections = topic.sections;
  sections.insert(sections.end(), more.begin(), more.end());
  for (const TopicSection& section : sections) {
    appendSection(section.title.empty() ? "DESCRIPTION" : escapedForManual(section.title), page);
    appendText(section.text, page);
    for (const auto& [term, text] : section.entries) appendEntry(bold(term), text, page);
    if (section.example.empty()) continue;
    page += ".nf\n";
    for (const std::string_view line : text::linesOf(section.example)) {
      page += escapedForManual(line) + "\n";
    }
    page += ".fi\n";
  }
  appendSection("SEE ALSO", page);
  return page + ".BR kraddon\\-build (1),\n.BR kraddon\\-init (1),\n.BR kraddon\\-verify (1)\n";
}

}  // namespace tool::line
