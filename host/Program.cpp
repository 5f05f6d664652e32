#include "host/Commands.h"
#include "host/Summary.h"
#include "host/Text.h"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <new>
#include <sstream>
#include <system_error>

namespace vxhost {

namespace {

using VxOutlookProvider::ResultException;

constexpr char kVersion[] = "vxhost " VXHOST_VERSION;

constexpr char kExamples[] = R"(Examples:
  vxhost index archive.pst > archive.ndjson
  vxhost index archive.pst --since 7d --save-attachments files -o week.ndjson
  vxhost folders archive.pst
  vxhost items archive.pst /Inbox
  vxhost profiles

vxhost COMMAND --help tells more about a command.

Exit status: 0 all was read; 1 the arguments make no sense; 2 a source could not be opened, or the output not be
written; 3 finished, but something could not be found or read; 130 interrupted.)";

// Help whose line of usage is written by hand: arguments depend on each other here in ways that the parser's own cannot
// tell.
class CommandHelp final : public CLI::Formatter {
public:
    explicit CommandHelp(std::string usage) : m_usage(std::move(usage)) {}

    std::string make_usage(const CLI::App* /*app*/, std::string /*name*/) const override {
        return "Usage: vxhost " + m_usage + '\n';
    }
    std::string make_positionals(const CLI::App* /*app*/) const override { return {}; }

private:
    std::string m_usage;
};

// What the parser says, in our own form; its numbers are not ours.
Status TellParseResult(Program& program, const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream text;
    const bool isQuestion = program.app.exit(error, out, text) == static_cast<int>(CLI::ExitCodes::Success);
    if (isQuestion) {
        Print(out.str());
        return Status::Done;
    }
    PrintFailure(Failure(Status::Usage, error.what(), "vxhost --help, or vxhost COMMAND --help, tells how."));
    return Status::Usage;
}

// Whether the first argument is to be a command, and is none: the parser would only say that it misses one.
bool IsUnknownCommand(const CLI::App& app, const std::vector<std::string>& arguments) {
    return !arguments.empty() && !arguments.front().starts_with('-')
           && app.get_subcommands([&](const CLI::App* command) { return command->check_name(arguments.front()); })
                  .empty();
}

Status Run(Program& program) {
    try {
        return program.run();
    } catch (const Failure& failure) {
        PrintFailure(failure);
        return failure.Kind();
    } catch (const Interrupted&) {
        return Status::Interrupted;
    } catch (const ResultException& failure) {
        PrintFailure(Failure(Status::Incomplete, std::string("The provider could not do it: ") + failure.what(),
                             "--log-dir DIR gives a log that says more."));
        return Status::Incomplete;
    } catch (const std::bad_alloc&) {
        PrintFailure(Failure(Status::Incomplete, "There is not enough memory", "Close other programs."));
        return Status::Incomplete;
    } catch (const std::exception& failure) {
        PrintFailure(Failure(Status::NotOpened, failure.what(), "See whether the disk is full."));
        return Status::NotOpened;
    }
}

}  // namespace

Settings Program::CommonSettings() const {
    Settings settings;
    settings.logLevel = logLevel;
    settings.logFolder = ToPath(logFolder);
    return settings;
}

CLI::App& Program::Add(CLI::App& parent, const std::string& name, const std::string& description,
                       const std::string& usage, const std::string& examples) {
    CLI::App& command = *parent.add_subcommand(name, description);
    command.fallthrough();
    command.formatter(std::make_shared<CommandHelp>(usage));
    command.footer(examples);
    return command;
}

bool UsesColour(Stream stream) {
    return Console::IsTerminal(stream) && Variable("NO_COLOR").empty() && Variable("TERM") != "dumb";
}

void PrintFailure(const Failure& failure) {
    const bool isColoured = UsesColour(Stream::Error);
    std::string text = std::string("vxhost: ") + (isColoured ? "\x1b[1;31m" : "") + failure.what()
                       + (isColoured ? "\x1b[0m" : "") + '\n';
    std::istringstream advice(failure.Advice());
    for (std::string line; std::getline(advice, line);) {
        text += "  " + line + '\n';
    }
    std::fwrite(text.data(), 1, text.size(), stderr);
}

Status TellProblems(Source& source, Status status) {
    const std::vector<std::string> problems = source.TakeProblems();
    if (problems.empty()) {
        return status;
    }
    std::string text = problems.front();
    if (problems.size() > 1) {
        text += "\nand " + CountText(problems.size() - 1) + " more";
    }
    PrintFailure(Failure(Status::Incomplete, source.Name() + " is damaged: not all of it can be read", text));
    return Status::Incomplete;
}

void Print(const std::string& text) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) {
        return;
    }
    const int error = errno;
    if (Console::IsReaderGone(error)) {
        throw Interrupted();
    }
    throw Failure(Status::NotOpened, "Standard output cannot be written: " + std::generic_category().message(error),
                  "See whether the disk is full.");
}

int RunProgram(const std::vector<std::string>& arguments) {
    Program program;
    CLI::App& app = program.app;
    app.name("vxhost");
    app.description(
        "Reads Outlook mailboxes: everything at once as lines of JSON, or folder by folder and item by item.");
    app.footer(kExamples);
    app.formatter(std::make_shared<CommandHelp>("COMMAND [ARGUMENTS] [OPTIONS]"));
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // a path may begin with a slash on Windows, too
    app.set_version_flag("--version", kVersion, "Print the version");
    app.add_option("--log-dir", program.logFolder, "Write a log below this folder, in logs/vxhost.log")
        ->type_name("DIR");
    app.add_option("--log-level", program.logLevel,
                   "How much is logged: off, error, warning, info (the default), verbose")
        ->check(CLI::IsMember({"off", "error", "warning", "info", "verbose"}, CLI::ignore_case).description(""))
        ->type_name("LEVEL");
    AddIndexCommand(program);
    AddListCommands(program);
    AddContentCommands(program);
    AddProfileCommands(program);
    if (IsUnknownCommand(app, arguments)) {
        PrintFailure(Failure(Status::Usage, "There is no command " + arguments.front(), "vxhost --help lists them."));
        return static_cast<int>(Status::Usage);
    }
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // as the parser wants them
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(TellParseResult(program, error));
    }
    return static_cast<int>(Run(program));
}

}  // namespace vxhost
