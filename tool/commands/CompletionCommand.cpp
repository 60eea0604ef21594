// SPDX-License-Identifier: MIT
#include <array>
#include <string>

#include "tool/commands/CommandTable.h"
#include "tool/line/Arguments.h"
#include "tool/line/Completion.h"
#include "tool/report/Output.h"

namespace tool::commands {

namespace {

constexpr std::array kOperands{
    line::OperandSpec{
        .name = "SHELL", .help = "bash, zsh or fish", .choices = line::completionShells},
    line::OperandSpec{
        .name = "WORD",
        .help = "what was typed up to the cursor, without quotes: the script asks what fits",
        .isRequired = false,
        .isRepeatable = true}};

constexpr std::string_view kDescription =
    "Prints the script that lets the shell complete commands, options, names, files, and paths "
    "inside a package. With the words of a line after '--', as the script calls it, it prints what "
    "may stand for the last of them: 'paths' or 'words', what goes before each, and the "
    "candidates, each with a tab and a description if it has one; every item ended by a NUL.";

constexpr std::array kExamples{
    line::ExampleSpec{
        "kraddon completion bash > ~/.local/share/bash-completion/completions/kraddon",
        "for bash, from the next one started on"},
    line::ExampleSpec{"kraddon completion zsh > ~/.zfunc/_kraddon",
                      "for zsh, with ~/.zfunc in its fpath"},
    line::ExampleSpec{"kraddon completion fish > ~/.config/fish/completions/kraddon.fish",
                      "for fish"}};

std::string recordsOf(const line::Completion& completion) {
  std::string text = completion.arePaths ? "paths" : "words";
  text += '\0';
  text += completion.prefix + '\0';
  for (const line::Candidate& candidate : completion.candidates) {
    text += candidate.word;
    if (!candidate.description.empty()) text += '\t' + candidate.description;
    text += '\0';
  }
  return text;
}

process::ExitCode run(const line::Invocation& invocation) {
  const auto& words = invocation.operands();
  const std::string_view script = line::completionScript(words[0]);
  report::Output output;
  if (words.size() == 1) {
    output.write(script);
  } else {
    output.write(recordsOf(line::complete(allCommands(), {words.begin() + 1, words.end()})));
  }
  output.flush();
  return process::ExitCode::Done;
}

}  // namespace

constexpr line::CommandSpec kCompletionCommand{
    .name = "completion",
    .summary = "prints the script that completes lines in a shell",
    .description = kDescription,
    .operands = kOperands,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
