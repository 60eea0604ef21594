// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "addon/comparison/Contents.h"
#include "addon/comparison/Digest.h"
#include "addon/packaging/Documents.h"
#include "opc/Text.h"
#include "text/JsonWriter.h"
#include "text/Suggest.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageAccess.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::comparison::contentDigest;
using addon::comparison::Item;
using addon::comparison::readTree;
using addon::comparison::Totals;
using addon::comparison::totalsOf;
using addon::packaging::AddonPackage;

namespace {

std::vector<std::string> fieldNames();

constexpr std::array kOperands{line::OperandSpec{.name = "PACKAGE", .help = "the package"}};

constexpr std::array kOptions{
    detail::kJsonOption, line::OptionSpec{.longName = "field",
                                          .valueName = "NAME",
                                          .help = "print only this value, named as in the JSON",
                                          .choices = fieldNames}};

struct Screenshot {
  std::string part;
  std::string type;
  std::uint64_t size;
};

struct Info {
  std::string file;
  std::uint64_t size = 0;
  addon::packaging::AddonProperties properties;
  std::string created;
  std::string modified;
  std::vector<std::string> documents;
  std::optional<Screenshot> screenshot;
  Totals totals;
  std::string digest;  // empty if not requested
};

constexpr std::array<std::string_view, 21> kFields{"file",
                                                   "size",
                                                   "type",
                                                   "release",
                                                   "name",
                                                   "version",
                                                   "summary",
                                                   "description",
                                                   "author.name",
                                                   "author.contact",
                                                   "author.organization",
                                                   "guid",
                                                   "created",
                                                   "modified",
                                                   "documents",
                                                   "screenshot",
                                                   "files",
                                                   "folders",
                                                   "bytes",
                                                   "packed",
                                                   "digest"};

std::string utf8(const std::u16string& text) {
  return opc::toUtf8ForDisplay(text);
}

std::string timeText(const boost::optional<boost::posix_time::ptime>& time) {
  return time ? detail::formatTime(*time) : std::string();
}

std::optional<Screenshot> readScreenshot(AddonPackage& package) {
  const std::string part = addon::packaging::screenshotPart(package);
  if (part.empty()) return std::nullopt;
  auto& model = package.logicalPackage();
  const opc::model::PartName name(opc::fromUtf8(part));
  if (!model.hasPart(name)) return std::nullopt;
  const auto found = model.getPart(name);
  return Screenshot{part, found->getContentType().ascii(), model.partInfo(found->id()).size};
}

std::uint64_t fileSize(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) throw process::systemFailure("cannot access", path, errno);
  return static_cast<std::uint64_t>(info.st_size);
}

Info readInfo(const std::string& path, bool wantsDigest, const line::Settings& settings) {
  const std::unique_ptr<AddonPackage> package = detail::openForReading(path);
  Info info;
  info.file = path;
  info.size = fileSize(path);
  package->getAddonProperties(info.properties);
  const auto core = package->coreProperties().getCoreProperties();
  info.created = timeText(core.getCreatedTime());
  info.modified = timeText(core.getLastModifiedTime());
  for (const addon::packaging::PresentDocument& document :
       addon::packaging::presentDocuments(*package)) {
    info.documents.emplace_back(document.name);
  }
  info.screenshot = readScreenshot(*package);
  const std::vector<Item> items = readTree(*package);
  info.totals = totalsOf(items);
  if (!wantsDigest) return info;
  report::ProgressBar bar(settings);
  info.digest = contentDigest(*package, items, bar.function());
  return info;
}

void writeJson(const Info& info, text::JsonWriter& json) {
  const auto text = [&](std::string_view name, const std::string& value) {
    json.key(name);
    json.textOrNull(value);
  };
  const auto& properties = info.properties;
  json.beginObject();
  json.member("schema", "kraddon.info/1");
  json.member("file", std::string_view(info.file));
  json.member("size", info.size);
  text("type", utf8(properties.type));
  text("release", utf8(properties.KorvanRelease));
  text("name", utf8(properties.name));
  text("version", utf8(properties.version));
  text("summary", utf8(properties.summary));
  text("description", utf8(properties.description));
  json.key("author");
  json.beginObject();
  text("name", utf8(properties.authorName));
  text("contact", utf8(properties.authorContact));
  text("organization", utf8(properties.authorOrganization));
  json.endObject();
  text("guid", utf8(properties.GUID));
  text("created", info.created);
  text("modified", info.modified);
  json.key("documents");
  json.beginArray();
  for (const std::string& name : info.documents) json.value(std::string_view(name));
  json.endArray();
  json.key("screenshot");
  if (info.screenshot) {
    json.beginObject();
    json.member("part", std::string_view(info.screenshot->part));
    json.member("type", std::string_view(info.screenshot->type));
    json.member("size", info.screenshot->size);
    json.endObject();
  } else {
    json.null();
  }
  json.member("files", info.totals.files);
  json.member("folders", info.totals.folders);
  json.member("bytes", info.totals.bytes);
  json.member("packed", info.totals.packed);
  json.member("digest", std::string_view(info.digest));
  json.endObject();
}

std::vector<std::string> fieldNames() {
  return {kFields.begin(), kFields.end()};
}

/// The value of a field as text, "" if it is not set.
std::string valueOf(const Info& info, std::string_view field) {
  const auto& properties = info.properties;
  const std::array<std::string, kFields.size()> values{
      info.file,
      std::to_string(info.size),
      utf8(properties.type),
      utf8(properties.KorvanRelease),
      utf8(properties.name),
      utf8(properties.version),
      utf8(properties.summary),
      utf8(properties.description),
      utf8(properties.authorName),
      utf8(properties.authorContact),
      utf8(properties.authorOrganization),
      utf8(properties.GUID),
      info.created,
      info.modified,
      fmt::format("{}", fmt::join(info.documents, "\n")),
      info.screenshot ? info.screenshot->part : std::string(),
      std::to_string(info.totals.files),
      std::to_string(info.totals.folders),
      std::to_string(info.totals.bytes),
      std::to_string(info.totals.packed),
      info.digest};
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    if (kFields[i] == field) return values[i];
  }
  return {};
}

/// "label         value", further lines of the value below its first one; nothing for "".
void writeLine(std::string_view label, std::string_view value, bool isColored,
               report::Output& output) {
  while (!value.empty()) {
    const std::size_t end = std::min(value.find('\n'), value.size());
    const std::string_view text = value.substr(0, end);
    // No blanks at the end of a line.
    const std::string padded = text.empty() ? std::string(label) : fmt::format("{:13} ", label);
    output.write(isColored ? fmt::format("\x1b[1m{}\x1b[0m", padded) : padded);
    output.write(output.shown(text) + "\n");
    value.remove_prefix(std::min(end + 1, value.size()));
    label = {};
  }
}

void writeText(const Info& info, bool isColored, report::Output& output) {
  const auto line = [&](std::string_view label, const std::string& value) {
    writeLine(label, value, isColored, output);
  };
  const auto& properties = info.properties;
  line("file", info.file);
  line("size", fmt::format("{} bytes", info.size));
  line("type", utf8(properties.type));
  line("release", utf8(properties.KorvanRelease));
  line("name", utf8(properties.name));
  line("version", utf8(properties.version));
  line("summary", utf8(properties.summary));
  line("description", utf8(properties.description));
  line("author", utf8(properties.authorName));
  line("contact", utf8(properties.authorContact));
  line("organization", utf8(properties.authorOrganization));
  line("guid", utf8(properties.GUID));
  line("created", info.created);
  line("modified", info.modified);
  line("documents", fmt::format("{}", fmt::join(info.documents, ", ")));
  if (info.screenshot) {
    line("screenshot", fmt::format("{}, {}, {} bytes", info.screenshot->part, info.screenshot->type,
                                   info.screenshot->size));
  }
  line("files", std::to_string(info.totals.files));
  line("empty folders", std::to_string(info.totals.folders));
  line("content", fmt::format("{} bytes, {} packed", info.totals.bytes, info.totals.packed));
  line("digest", info.digest);
}

void checkField(const line::Invocation& invocation) {
  const std::optional<std::string> field = invocation.value("field");
  if (!field) return;
  if (invocation.has("json")) {
    throw process::UsageError(
        process::sentence("bad option", "--field", "it cannot be combined with --json"));
  }
  if (std::find(kFields.begin(), kFields.end(), *field) != kFields.end()) return;
  const std::string all = fmt::format("the fields are {}", fmt::join(kFields, ", "));
  throw process::UsageError(
      process::sentence("unknown field", *field, text::suggestion(*field, kFields, all)));
}

process::ExitCode run(const line::Invocation& invocation) {
  checkField(invocation);
  const std::optional<std::string> field = invocation.value("field");

  const Info info =
      readInfo(invocation.operands()[0], !field || *field == "digest", invocation.settings());

  report::Output output;
  if (field) {
    output.write(output.shown(valueOf(info, *field)) + "\n");
  } else if (invocation.has("json")) {
    std::string text;
    text::JsonWriter json(text);
    writeJson(info, json);
    output.write(text + "\n");
  } else {
    writeText(info, report::wantsColor(invocation.settings(), output), output);
  }
  output.flush();
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon info kit.kraddon", "shows an overview"},
    line::ExampleSpec{"kraddon info kit.kraddon --field version",
                      "prints only the add-on's version"},
    line::ExampleSpec{"kraddon info kit.kraddon --json", "prints the overview for other programs"}};

}  // namespace

constexpr line::CommandSpec kInfoCommand{
    .name = "info",
    .summary = "shows the properties and sizes of a package",
    .description =
        "Prints the properties, the number and sizes of the files, the documents in the package, "
        "and the digest of its content. Packages with the same content have the same digest, "
        "however and whenever they were packed. Values that are not set are left out; with --field "
        "they are empty.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
