// SPDX-License-Identifier: MIT
#include "tool/Program.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "addon/build/BuildError.h"
#include "tool/commands/CommandTable.h"
#include "tool/line/Arguments.h"
#include "tool/line/Help.h"
#include "tool/process/Background.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"

namespace tool {

namespace {

constexpr const char* kVersion = KRADDON_VERSION;

/// A standard stream that was closed would otherwise be the number of the next file opened: a
/// package, say, into which results would then be printed.
void occupyStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (::fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
    // Readable only: what is printed to a closed output has to fail. The lowest number is taken.
    if (::open("/dev/null", O_RDONLY) < 0) return;
  }
}

void ignoreBrokenPipes() {
  struct sigaction action {};
  action.sa_handler = SIG_IGN;
  ::sigemptyset(&action.sa_mask);
  ::sigaction(SIGPIPE, &action, nullptr);
}

/// Some destructors of libraries cannot do without memory, and end here when there is none.
[[noreturn]] void endWithoutMemory() {
  try {
    if (const auto failure = std::current_exception()) std::rethrow_exception(failure);
  } catch (const std::bad_alloc&) {
    report::printLackOfMemory({});
    ::_exit(static_cast<int>(process::ExitCode::Failed));
  } catch (...) {
    // A fault of the program's own.
  }
  std::abort();
}

process::ExitCode print(const std::string& text) {
  report::Output output;
  output.write(text);
  output.flush();
  return process::ExitCode::Done;
}

/// What was understood so far, for the message of whatever goes wrong.
struct Context {
  const line::CommandSpec* command = nullptr;
};

process::ExitCode dispatch(const std::vector<std::string>& words, Context& context) {
  const line::LeadingArguments leading = line::parseLeadingArguments(words);
  if (leading.wantsVersion) return print(std::string("kraddon ") + kVersion + "\n");
  if (leading.wantsHelp) return print(line::programHelp(commands::allCommands()));
  if (leading.rest.empty()) {
    report::printToStandardError(line::programHelp(commands::allCommands()));
    return process::ExitCode::WrongUsage;
  }
  context.command = &commands::findCommand(leading.rest[0]);
  bool wantsHelp = false;
  const line::Invocation invocation =
      line::parseArguments(*context.command, leading.settings,
                           {leading.rest.begin() + 1, leading.rest.end()}, wantsHelp);
  if (wantsHelp) return print(line::helpOf(*context.command));
  if (leading.directory && ::chdir(leading.directory->c_str()) != 0) {
    throw process::systemFailure("cannot enter the folder", *leading.directory, errno);
  }
  return context.command->run(invocation);
}

std::string_view nameOf(const Context& context) {
  return context.command == nullptr ? std::string_view() : context.command->name;
}

process::ExitCode failureCode(const Context& context) {
  return context.command == nullptr ? process::ExitCode::Failed : context.command->failureCode;
}

process::ExitCode runReportingFailures(const std::vector<std::string>& words, Context& context) {
  try {
    occupyStandardStreams();
    ignoreBrokenPipes();
    return dispatch(words, context);
  } catch (const process::Interrupted& interrupted) {
    process::Interrupt::die(interrupted.signal);
  } catch (const process::UsageError& error) {
    report::printError(nameOf(context), error.what(), error.hint());
    report::printToStandardError(context.command == nullptr
                                     ? line::programUsage()
                                     : line::usageOf(*context.command) +
                                           line::helpPointerOf(*context.command));
    return process::ExitCode::WrongUsage;
  } catch (const process::Failure& failure) {
    report::printError(nameOf(context), failure.what(), failure.hint());
  } catch (const addon::build::BuildError& error) {
    report::printError(nameOf(context), error.what(), error.hint());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    report::printError(nameOf(context), error.what());
  }
  return failureCode(context);
}

process::ExitCode runReportingEverything(std::span<char* const> arguments) {
  Context context;
  try {
    return runReportingFailures({arguments.begin(), arguments.end()}, context);
  } catch (const std::bad_alloc&) {
    // Of the words, of the work, or of a message about another failure.
    report::printLackOfMemory(nameOf(context));
  }
  return failureCode(context);
}

}  // namespace

process::ExitCode runProgram(std::span<char* const> arguments) {
  std::set_terminate(endWithoutMemory);
  process::ExitCode code = process::ExitCode::Failed;
  try {
    process::withEnoughStack([&] { code = runReportingEverything(arguments); });
  } catch (const process::Failure& failure) {
    report::printError({}, failure.what(), failure.hint());
  }
  return code;
}

}  // namespace tool
