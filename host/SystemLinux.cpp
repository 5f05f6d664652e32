#include "host/Failures.h"
#include "host/System.h"
#include "host/Text.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

#include <fcntl.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vxhost {

// ---- Arguments, terminals --------------------------------------------------------------------------------------------

std::vector<std::string> Arguments(int argc, char** argv) {
    return std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc);
}

Console::Console() {
    std::signal(SIGPIPE, SIG_IGN);
}

Console::~Console() = default;

namespace {

int DescriptorOf(Stream stream) noexcept {
    return stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO;
}

}  // namespace

bool Console::IsTerminal(Stream stream) {
    return ::isatty(DescriptorOf(stream)) == 1;
}

std::size_t Console::Width(Stream stream) {
    winsize size = {};
    return ::ioctl(DescriptorOf(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

bool Console::IsReaderGone(int error) noexcept {
    return error == EPIPE;
}

// ---- Ctrl-C ----------------------------------------------------------------------------------------------------------

// The signals are blocked, so that nothing is interrupted by them, and one thread waits for them.
struct Interruption::Watch {
    sigset_t waitedFor = {};
    sigset_t before = {};
    std::atomic<bool> isEnding = false;
    std::thread thread;
};

Interruption::Interruption(std::function<void()> raise)
    : m_raise(std::move(raise)), m_watch(std::make_unique<Watch>()) {
    sigemptyset(&m_watch->waitedFor);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        const bool isIgnored = ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
        if (!isIgnored) {  // as by nohup, and the user meant it
            sigaddset(&m_watch->waitedFor, signal);
        }
    }
    sigaddset(&m_watch->waitedFor, SIGUSR2);  // the destructor's
    ::pthread_sigmask(SIG_BLOCK, &m_watch->waitedFor, &m_watch->before);
    m_watch->thread = std::thread([this] {
        for (int signal = 0; ::sigwait(&m_watch->waitedFor, &signal) == 0 && !m_watch->isEnding;) {
            if (signal == SIGUSR2) {
                continue;
            }
            if (m_isRaised.exchange(true)) {
                std::_Exit(static_cast<int>(Status::Interrupted));
            }
            m_raise();
        }
    });
}

Interruption::~Interruption() {
    m_watch->isEnding = true;
    ::pthread_kill(m_watch->thread.native_handle(), SIGUSR2);
    m_watch->thread.join();
    ::pthread_sigmask(SIG_SETMASK, &m_watch->before, nullptr);
}

// ---- The process, its environment, its files -------------------------------------------------------------------------

unsigned ProcessId() noexcept {
    return static_cast<unsigned>(::getpid());
}

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

void SetVariable(const char* name, const std::string& value) {
    if (value.empty()) {
        ::unsetenv(name);
    } else {
        ::setenv(name, value.c_str(), 1);
    }
}

int ProbeForReading(const std::filesystem::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return errno;
    }
    ::close(descriptor);
    return 0;
}

bool IsNameableInProfile(const std::filesystem::path& file) {
    // The page is UTF-8 unless it is told otherwise, and then ASCII alone is sure to be in it.
    const std::string page = Variable("VX_ANSI_CODEPAGE");
    const std::string& name = file.native();
    if (page.empty() || page == "65001") {
        return PathText(file) == name;
    }
    return name.find_first_not_of(
               "\t !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
               "abcdefghijklmnopqrstuvwxyz{|}~")
           == std::string::npos;
}

std::filesystem::path ShortPath(const std::filesystem::path& /*file*/) {
    return {};
}

// ---- The log ---------------------------------------------------------------------------------------------------------

namespace {

std::filesystem::path RegistryFile() {
    if (const std::string own = Variable("VX_REGISTRY"); !own.empty()) {
        return own;
    }
    if (const std::string home = Variable("VX_HOME"); !home.empty()) {
        return std::filesystem::path(home) / "registry.reg";
    }
    const std::string settings = Variable("XDG_CONFIG_HOME");
    return (settings.starts_with('/') ? std::filesystem::path(settings)
                                      : std::filesystem::path(Variable("HOME")) / ".config")
           / "vx" / "registry.reg";
}

// The user's registry without its first line, in UTF-8, so that what it says still counts; empty without one.
std::string UsersEntries() {
    std::ifstream file(RegistryFile(), std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (text.starts_with("\xFF\xFE")) {
        std::u16string wide(text.size() / 2 - 1, u'\0');
        std::memcpy(wide.data(), text.data() + 2, wide.size() * 2);
        text = ToUtf8(wide);
    }
    const std::size_t end = text.find('\n');
    return end == std::string::npos ? std::string() : text.substr(end + 1);
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == '"') {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

}  // namespace

// The registry is a text file that the environment names. One of our own stands in for the user's.
LogRegistration::LogRegistration(const std::string& name, const std::filesystem::path& folder,
                                 const std::filesystem::path& workFolder)
    : m_before(Variable("VX_REGISTRY")) {
    const std::filesystem::path registry = workFolder / "registry.reg";
    std::ofstream file(registry, std::ios::binary);
    file << "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\" << name << "]\n\"DataPath\"=\""
         << Escaped(folder.native()) << "\"\n\n"
         << UsersEntries();
    file.close();
    if (!file) {
        throw Failure(Status::NotOpened, PathText(registry) + " cannot be written",
                      "The log needs it; see whether the disk is full.");
    }
    SetVariable("VX_REGISTRY", registry.native());
}

LogRegistration::~LogRegistration() {
    SetVariable("VX_REGISTRY", m_before);
}

}  // namespace vxhost
