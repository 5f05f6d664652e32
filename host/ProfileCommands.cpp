// vxhost profile: the administration of profiles.
#include "host/Commands.h"
#include "host/Text.h"

#include <memory>

namespace vxhost {

namespace {

// One of the commands: its arguments, by the order in which they stand.
struct Administration {
    std::vector<std::string> words;
    bool isCached = false;

    std::u16string At(std::size_t place) const { return ToUtf16(words[place]); }
};

[[noreturn]] void FailTo(const std::string& what, const std::string& advice) {
    throw Failure(Status::Incomplete, what, advice + "\n--log-dir DIR gives a log that says more.");
}

void RequireProfile(Session& session, const Administration& arguments) {
    if (FindProfile(session, arguments.At(0)).empty()) {
        throw Failure(Status::Incomplete, "There is no profile " + arguments.words[0],
                      "vxhost profiles lists those that there are; vxhost profile create makes one.");
    }
}

Status Create(Session& session, const Administration& arguments) {
    // The provider would take a profile of that name for a half-made one and delete it.
    VxOutlookProvider::Value stores;
    session.Provider().GetProfileStores(arguments.At(0), stores);
    if (!FindProfile(session, arguments.At(0)).empty() || !stores.Elements().empty()) {
        throw Failure(Status::Incomplete, "There is a profile " + arguments.words[0] + " already",
                      "Choose another name, or delete it with vxhost profile delete.");
    }
    if (!session.Provider().CreateMAPIProfile(arguments.At(0))) {
        FailTo("The profile " + arguments.words[0] + " could not be made",
               "See whether the folder of profiles may be written to, and the name is not too long.");
    }
    return Status::Done;
}

Status Delete(Session& session, const Administration& arguments) {
    RequireProfile(session, arguments);
    if (!session.Provider().DeleteMAPIProfile(FindProfile(session, arguments.At(0)))) {
        FailTo("The profile " + arguments.words[0] + " could not be deleted",
               "See whether the folder of profiles may be written to.");
    }
    return Status::Done;
}

Status AddPst(Session& session, const Administration& arguments) {
    RequireProfile(session, arguments);
    const std::filesystem::path file = ToPath(arguments.words[1]);
    CheckMailboxFile(file);
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(file, error).lexically_normal();
    if (!IsNameableInProfile(path)) {
        throw Failure(Status::NotOpened, PathText(file) + ": its name has characters that profiles cannot keep",
                      "Rename it, with plain letters.");
    }
    if (!session.Provider().AddPSTToMAPIProfile(ToUtf16(PathText(path)), arguments.At(0))) {
        throw Failure(Status::NotOpened, PathText(file) + " could not be added: it is too damaged, or in use",
                      "Use another copy of it, or repair it with Outlook's own tool (scanpst).\n"
                      "--log-dir DIR gives a log that says more.");
    }
    return Status::Done;
}

Status AddExchange(Session& session, const Administration& arguments) {
    RequireProfile(session, arguments);
    if (!session.Provider().AddExchangeToProfile(arguments.At(0), arguments.At(2), arguments.At(1),
                                                 arguments.isCached)) {
        FailTo("The account could not be added", "See whether the server and the mailbox are right.");
    }
    return Status::Done;
}

Status AddDelegate(Session& session, const Administration& arguments) {
    RequireProfile(session, arguments);
    if (!session.Provider().AddDelegateToProfile(arguments.At(1), arguments.At(2), arguments.At(3), arguments.At(4),
                                                 arguments.At(0))) {
        FailTo("The mailbox could not be added", "The profile must have an Exchange account.");
    }
    return Status::Done;
}

Status RemoveDelegate(Session& session, const Administration& arguments) {
    RequireProfile(session, arguments);
    if (!session.Provider().RemoveDelegateStore(arguments.At(1), arguments.At(0))) {
        FailTo("The mailbox could not be removed", "See whether the profile has a mailbox of exactly that name.");
    }
    return Status::Done;
}

using Run = Status (*)(Session&, const Administration&);

struct Row {
    const char* name;
    const char* description;
    const char* usage;  // the arguments, a word each
    int arguments;
    const char* example;
    Run run;
};

constexpr Row kRows[] = {
    {"create", "Make an empty profile", "NAME", 1, "create Archive", Create},
    {"delete", "Delete a profile; mailbox files stay", "NAME", 1, "delete Archive", Delete},
    {"add-pst", "Add a mailbox file to a profile", "NAME FILE", 2, "add-pst Archive /home/ada/2019.pst", AddPst},
    {"add-exchange", "Add an Exchange account to a profile", "NAME MAILBOX SERVER [--cached]", 3,
     "add-exchange Work ada mail.example.com", AddExchange},
    {"add-delegate", "Add another user's mailbox to the Exchange account of a profile",
     "NAME DISPLAY-NAME MAILBOX-DN SERVER SERVER-DN", 5,
     "add-delegate Work \"Grace\" /o=Example/cn=grace mail.example.com /o=Example/cn=mail", AddDelegate},
    {"remove-delegate", "Remove such a mailbox", "NAME DISPLAY-NAME", 2, "remove-delegate Work Grace", RemoveDelegate},
};

}  // namespace

void AddProfileCommands(Program& program) {
    CLI::App& group = program.Add(program.app, "profile", "Make profiles and change them", "profile COMMAND ARGUMENTS",
                                  "Example:\n  vxhost profile create Archive\n"
                                  "  vxhost profile add-pst Archive /home/ada/2019.pst\n"
                                  "  vxhost index --profile Archive");
    group.require_subcommand(1);
    for (const Row& row : kRows) {
        CLI::App& command =
            program.Add(group, row.name, row.description, std::string("profile ") + row.name + ' ' + row.usage,
                        std::string("Example:\n  vxhost profile ") + row.example);
        const auto arguments = std::make_shared<Administration>();
        command.add_option("arguments", arguments->words, "")->expected(row.arguments)->required();
        if (row.run == AddExchange) {
            command.add_flag("--cached", arguments->isCached, "Keep a local copy");
        }
        command.callback([&program, arguments, run = row.run] {
            program.run = [&program, arguments, run] {
                Session session(program.CommonSettings());
                return run(session, *arguments);
            };
        });
    }
}

}  // namespace vxhost
