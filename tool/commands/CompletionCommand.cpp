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
    line::OperandSpec{.name = "WORD",
                      .help = "the words before the cursor, without quotes; for the script",
                      .isRequired = false,
                      .isRepeatable = true}};

constexpr std::string_view kDescription =
    "The script completes commands, options, names, files, and paths inside a package. To do so, "
    "it runs this command with the words of the line after '--'. It then prints the candidates for "
    "the last word: 'paths' or 'words', the text in front of each candidate, and the candidates, "
    "each with a tab and a description if it has one. Every item ends with NUL.";

constexpr std::array kExamples{
    line::ExampleSpec{
        "kraddon completion bash > ~/.local/share/bash-completion/completions/kraddon",
        "for bash; takes effect in new shells"},
    line::ExampleSpec{"kraddon completion zsh > ~/.zfunc/_kraddon",
                      "for zsh, if ~/.zfunc is in fpath"},
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
    .summary = "prints a script for completion in a shell",
    .description = kDescription,
    .operands = kOperands,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
