// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>

#include "opc/signatures/Verification.h"
#include "text/ByteCount.h"
#include "text/JsonWriter.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/Times.h"
#include "tool/commands/detail/TrustAnchors.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"

namespace tool::commands {

using opc::signatures::Signature;
using opc::signatures::SignatureState;
using opc::signatures::Verification;

namespace {

constexpr std::array kOperands{detail::kPackageOperand};

constexpr std::array kOptions{detail::kTrustOption, detail::kJsonOption};

std::string timeOf(const Signature& signature) {
  return signature.xml.time ? detail::formatTime(*signature.xml.time) : std::string();
}

void writeNames(std::string_view name, const std::vector<std::string>& parts,
                text::JsonWriter& json) {
  json.key(name);
  json.beginArray();
  for (const std::string& part : parts) json.value(std::string_view(part));
  json.endArray();
}

void writeJson(const Signature& signature, text::JsonWriter& json) {
  json.beginObject();
  json.member("part", std::string_view(signature.part));
  json.member("state", opc::signatures::nameOf(signature.state));
  json.key("reason");
  json.textOrNull(signature.reason);
  json.key("signer");
  if (const auto& signer = signature.xml.signer) {
    json.beginObject();
    json.member("subject", std::string_view(signer->subject));
    json.member("issuer", std::string_view(signer->issuer));
    json.member("serial", std::string_view(signer->serial));
    json.member("fingerprint", std::string_view(signer->fingerprint));
    json.member("notBefore", std::string_view(detail::formatTime(signer->notBefore)));
    json.member("notAfter", std::string_view(detail::formatTime(signer->notAfter)));
    json.endObject();
  } else {
    json.null();
  }
  json.key("algorithm");
  json.textOrNull(signature.xml.algorithm);
  json.key("time");
  json.textOrNull(timeOf(signature));
  json.member("covered", std::uint64_t{signature.covered});
  writeNames("uncovered", signature.uncovered, json);
  writeNames("changed", signature.changed, json);
  json.key("trusted");
  if (signature.xml.isTrusted) {
    json.value(*signature.xml.isTrusted);
  } else {
    json.null();
  }
  json.endObject();
}

void printJson(const std::string& path, const Verification& verified, report::Output& output) {
  std::string text;
  text::JsonWriter json(text);
  json.beginObject();
  json.member("schema", "kraddon.signatures/1");
  json.member("file", std::string_view(path));
  json.key("signatures");
  json.beginArray();
  for (const Signature& signature : verified.signatures) writeJson(signature, json);
  json.endArray();
  json.endObject();
  output.write(text + "\n");
}

void writeLine(std::string_view label, std::string_view value, report::Output& output) {
  if (!value.empty()) output.write(fmt::format("{:13} {}\n", label, output.shown(value)));
}

void printText(const Signature& signature, report::Output& output) {
  const opc::interfaces::XmlSignature& xml = signature.xml;
  writeLine("signature", signature.part, output);
  writeLine("state", opc::signatures::nameOf(signature.state), output);
  writeLine("reason", signature.reason, output);
  if (const auto& signer = xml.signer) {
    writeLine("signer", signer->subject, output);
    writeLine("issuer", signer->issuer, output);
    writeLine("serial", signer->serial, output);
    writeLine("fingerprint", signer->fingerprint, output);
    writeLine("certificate",
              fmt::format("valid from {} to {}", detail::formatTime(signer->notBefore),
                          detail::formatTime(signer->notAfter)),
              output);
  }
  writeLine("algorithm", xml.algorithm, output);
  writeLine("time", timeOf(signature), output);
  writeLine("covers", text::counted(signature.covered, "part"), output);
  if (!xml.isTrusted) return;
  writeLine("trusted", *xml.isTrusted ? "yes" : "no: " + xml.distrust, output);
}

bool isGood(const Signature& signature) {
  return signature.state == SignatureState::Valid && signature.xml.isTrusted.value_or(true);
}

process::ExitCode run(const line::Invocation& invocation) {
  const std::string& path = invocation.operands()[0];
  const auto anchors = detail::trustAnchorsOf(invocation);
  const auto package = detail::openForReading(path);
  const Verification verified =
      opc::signatures::verifySignatures(package->logicalPackage(), anchors.get());

  report::Output output;
  if (invocation.has("json")) {
    printJson(path, verified, output);
  } else {
    for (const Signature& signature : verified.signatures) {
      if (&signature != &verified.signatures.front()) output.write("\n");
      printText(signature, output);
    }
  }
  output.flush();
  for (const opc::signatures::SignatureFault& fault : verified.faults) {
    const std::string& where = fault.part.empty() ? path : fault.part;
    report::printError("signatures", process::sentence("bad signature", where, fault.message));
  }
  if (!verified.isSigned() && verified.faults.empty() && !invocation.has("json")) {
    report::printError("signatures", process::sentence("package", path, "it is not signed"));
  }
  const bool isAllGood =
      verified.isSigned() && verified.faults.empty() &&
      std::all_of(verified.signatures.begin(), verified.signatures.end(), isGood);
  return isAllGood ? process::ExitCode::Done : process::ExitCode::Failed;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon signatures kit.kraddon", "shows who signed, when, and what"},
    line::ExampleSpec{"kraddon signatures kit.kraddon --trust maker.pem --json",
                      "for other programs, with a look at the signers"}};

}  // namespace

constexpr line::CommandSpec kSignaturesCommand{
    .name = "signatures",
    .summary = "shows the signatures of a package",
    .description =
        "Prints a block for each signature: the signer's certificate, the time, and the state. "
        "Valid: everything in the package is as it was signed. Partial: what the signature covers "
        "is unchanged, but it does not cover everything. Broken: something has changed. Weak: the "
        "key is too short. Unsupported: kraddon cannot check this kind of signature. The exit code "
        "is 0 if there is a signature, all are valid, and with --trust all of their signers are "
        "trusted; otherwise it is 1.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
