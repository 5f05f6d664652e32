#include "host/Session.h"

#include "host/Failures.h"
#include "host/Text.h"

#include <system_error>

namespace vxhost {

namespace {

using VxOutlookProvider::ResultException;

// The application that the provider is told of. It has no data path, hence no log, unless the user has given it one.
constexpr char kApplication[] = "vxhost";

// The provider's settings, which stand between bars. Each needs a value: the provider passes over empty ones.
std::string SettingsText(const Settings& settings, const std::string& application) {
    const std::filesystem::path folder =
        settings.tempFolder.empty() ? std::filesystem::temp_directory_path() : settings.tempFolder;
    constexpr char kNothingElse[] = "|0|-1|0|";
    return std::to_string(settings.bodyLimit) + '|' + std::to_string(settings.attachmentLimit) + kNothingElse
           + PathText(folder) + '|' + application + '|' + kApplication;
}

}  // namespace

Session::Session(const Settings& settings)
    : m_workFolder(std::filesystem::temp_directory_path()),
      m_problems(m_workFolder.Path() / "problems.txt"),
      m_interruption([this] { m_provider.SetAbort(true); }) {
    std::string application = kApplication;
    const std::unique_ptr<LogRegistration> log = RegisterLog(settings, application);
    try {
        m_provider.InitializeVxMapi(ToUtf16(SettingsText(settings, application)), ToUtf16(settings.logLevel));
    } catch (const ResultException& failure) {
        throw Failure(
            Status::NotOpened, std::string("MAPI could not be started: ") + failure.what(),
            "On Linux libmapi32.so must lie beside the provider's library, or in the folder that VX_SYSTEM_DIR "
            "names.\nOn Windows a mail client with 64-bit MAPI must be installed.");
    }
}

std::unique_ptr<LogRegistration> Session::RegisterLog(const Settings& settings, std::string& application) {
    if (settings.logFolder.empty()) {
        return nullptr;
    }
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::absolute(settings.logFolder, error);
    std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder)) {
        throw Failure(Status::NotOpened, PathText(folder) + " is no folder and cannot be made one: " + error.message(),
                      "Name another folder with --log-dir.");
    }
    application = UniqueName();
    return std::make_unique<LogRegistration>(application, folder, WorkFolder());
}

void Session::ThrowIfInterrupted() const {
    if (m_interruption.IsRaised()) {
        throw Interrupted();
    }
}

}  // namespace vxhost
