// The provider as this program has it: initialised with the run's settings, aborted by Ctrl-C, ended at the end.
#pragma once

#include "host/ProblemLog.h"
#include "host/System.h"
#include "host/TempFolder.h"
#include "provider/InstanceProxy.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace vxhost {

using VxOutlookProvider::InstanceProxy;

struct Settings {
    std::int64_t bodyLimit = -1;        // bytes; -1: the provider's own
    std::int64_t attachmentLimit = -1;  // the same
    std::filesystem::path tempFolder;   // for attachments in files, without a "|"; empty: the system's
    std::string logLevel = "Info";
    std::filesystem::path logFolder;  // empty: no log
};

class Session {
public:
    // Throws Failure when MAPI cannot be started, or there is no place for the run's own files.
    explicit Session(const Settings& settings);

    InstanceProxy& Provider() noexcept { return m_provider; }

    // A folder for the run's own files.
    const std::filesystem::path& WorkFolder() const noexcept { return m_workFolder.Path(); }

    // What was found wrong with mailbox files.
    ProblemLog& Problems() noexcept { return m_problems; }

    // Throws Interrupted when Ctrl-C was pressed. To be asked after each call that can be aborted.
    void ThrowIfInterrupted() const;

private:
    std::unique_ptr<LogRegistration> RegisterLog(const Settings& settings, std::string& application);

    TempFolder m_workFolder;
    ProblemLog m_problems;
    InstanceProxy m_provider;
    Interruption m_interruption;  // last: it calls the provider
};

}  // namespace vxhost
