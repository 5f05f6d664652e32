// What is read: a profile of the user's, or a mailbox file, for which a profile is made that lives as long as it is
// read. One thread.
#pragma once

#include "host/Session.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vxhost {

// Throws Failure, with file, reason and advice, unless the file begins as a mailbox file does and may be read.
void CheckMailboxFile(const std::filesystem::path& file);

class Source {
public:
    // Opens a mailbox file. Throws Failure.
    static Source OfFile(Session& session, const std::filesystem::path& file);

    // Finds a profile, whatever the case of its name. Throws Failure when there is none.
    static Source OfProfile(Session& session, const std::string& name);

    // Removes the profile that was made. Gives no error.
    ~Source();
    Source(Source&& other) noexcept;
    Source& operator=(Source&&) = delete;

    const std::u16string& Profile() const noexcept { return m_profile; }

    // What the user calls it.
    const std::string& Name() const noexcept { return m_name; }

    // What was found wrong with it since the last call, and read around.
    std::vector<std::string> TakeProblems() { return m_session->Problems().TakeNew(m_file); }

private:
    Source(Session& session, std::u16string profile, std::string name, std::filesystem::path file);

    void AddMailbox();

    Session* m_session;  // not owned; null once moved from
    std::u16string m_profile;
    std::string m_name;
    std::filesystem::path m_file;  // for which the profile was made; empty when it is the user's
};

// The name of a profile as the system lists it; empty when there is none.
std::u16string FindProfile(Session& session, const std::u16string& name);

// A path that a profile can keep for the file: its own, or another one of the same file. Throws Failure.
std::filesystem::path PathForProfile(Session& session, const std::filesystem::path& file);

}  // namespace vxhost
