// The commands of the program: what each takes from its arguments, and what it then does.
#pragma once

#include "host/Failures.h"
#include "host/Session.h"
#include "host/Sources.h"
#include "host/System.h"
#include "provider/HostValue.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace vxhost {

// What all commands share, and what one of them leaves for the program to run.
struct Program {
    CLI::App app;
    std::string logLevel = "Info";
    std::string logFolder;
    std::function<Status()> run;  // of the command that was given

    // Settings with the arguments that all commands share.
    Settings CommonSettings() const;

    // Adds a command; `usage` is what stands behind the program's name, `examples` are lines of their own.
    CLI::App& Add(CLI::App& parent, const std::string& name, const std::string& description, const std::string& usage,
                  const std::string& examples);
};

void AddIndexCommand(Program& program);
void AddListCommands(Program& program);
void AddContentCommands(Program& program);
void AddProfileCommands(Program& program);

// Parses the arguments and runs the command: the program's exit status.
int RunProgram(const std::vector<std::string>& arguments);

// ---- What commands share ----

// Whether text for that stream may have colours.
bool UsesColour(Stream stream);

// Says on standard error what failed and what to do.
void PrintFailure(const Failure& failure);

// Says on standard error that something is wrong with the source, if it is: Incomplete then, else `status`.
Status TellProblems(Source& source, Status status);

// Writes to standard output at once.
void Print(const std::string& text);

// A result as a table for people or, with --json, an object a line.
void AddJsonOption(CLI::App& command, bool& isJson);

// The arguments that name objects: a source, which is a mailbox file unless there is --profile, and then what is in it.
class ObjectArguments {
public:
    // `names` are those of the arguments behind the source; the last `optional` of them may be left out.
    ObjectArguments(CLI::App& command, std::vector<std::string> names, std::size_t optional = 0);

    // Throws Failure when there are too few arguments or too many.
    void Check() const;

    Source Open(Session& session) const;

    // The argument of that place, in UTF-16; empty when it was left out.
    std::u16string At(std::size_t place) const;

    // The stores of the source, or the one that --store names, by name or id. Throws Failure when there is none.
    VxOutlookProvider::Value::Array Stores(Session& session, const Source& source) const;

    // The folder that an argument names, by path or id. Throws Failure when there is none.
    VxOutlookProvider::Value FindFolder(Session& session, const Source& source, std::u16string_view name) const;

private:
    std::vector<std::string> m_names;
    std::size_t m_optional;
    std::vector<std::string> m_words;
    std::string m_profile;
    std::string m_store;
};

}  // namespace vxhost
