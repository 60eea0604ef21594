// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "addon/catalogue/Search.h"
#include "text/JsonWriter.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/OneLine.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::catalogue::Record;

namespace {

constexpr std::array kOperands{
    line::OperandSpec{.name = "SITE", .help = "the folder of the site"},
    line::OperandSpec{.name = "WORDS", .help = "what to look for", .isRepeatable = true}};

constexpr std::array kOptions{
    line::OptionSpec{
        .longName = "limit", .valueName = "N", .help = "print at most N add-ons (default: 100)"},
    detail::kJsonOption};

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon search site wave",
                      "lists the add-ons that have a word beginning with 'wave'"},
    line::ExampleSpec{"kraddon search site author:lind spectr",
                      "the same of one author; both words must be there"},
    line::ExampleSpec{"kraddon search site requires:signal --json",
                      "prints what is known of add-ons that need a product"}};

void writeText(const std::vector<Record>& records, report::Output& output) {
  const auto column = [&](const std::string& text) {
    return output.shown(detail::inOneLine(text));
  };
  for (const Record& record : records) {
    const std::string& author = record.author.empty() ? record.organization : record.author;
    output.write(fmt::format("{}\t{}\t{}\t{}\n", column(record.name), column(record.version),
                             column(author), column(record.summary)));
  }
}

void writeJson(const std::vector<Record>& records, report::Output& output) {
  std::string text;
  text::JsonWriter json(text);
  json.beginObject();
  json.member("schema", "kraddon.search/1");
  json.key("results");
  json.beginArray();
  for (const Record& record : records) addon::catalogue::writeRecord(record, json);
  json.endArray();
  json.endObject();
  output.write(text + "\n");
}

process::ExitCode run(const line::Invocation& invocation) {
  constexpr std::int64_t kUsual = 100;
  const std::vector<std::string>& operands = invocation.operands();
  const auto limit =
      invocation.number("limit", 1, std::numeric_limits<std::int64_t>::max()).value_or(kUsual);
  const std::vector<Record> records = addon::catalogue::searchSite(
      operands[0], {operands.begin() + 1, operands.end()}, static_cast<std::uint64_t>(limit));
  report::Output output;
  invocation.has("json") ? writeJson(records, output) : writeText(records, output);
  output.flush();
  return process::ExitCode::Done;
}

}  // namespace

constexpr line::CommandSpec kSearchCommand{
    .name = "search",
    .summary = "finds add-ons in a site",
    .description =
        "Prints the add-ons that have all words, the best first: name, version, author and "
        "summary, with tabs between them. A word matches the beginning of any word of the name, "
        "summary, description, author, organization or requirements; case and accents are ignored. "
        "Words without a letter or digit are ignored; without others, all add-ons are listed by "
        "name. "
        "The prefixes name:, author: and requires: limit a word to the name, to the author and "
        "organization, or to the requirements. No other syntax is special. Only the newest version "
        "of an add-on that is not yanked is searched. SITE is a folder made by 'kraddon index'.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
