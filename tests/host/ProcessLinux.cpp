#include "tests/host/Process.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vx_testing {

namespace {

std::string Contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace

struct Process::Handles {
    pid_t process = -1;
};

Process::Process(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::filesystem::path& folder, Reader reader)
    : m_output(folder / "output"), m_errors(folder / "errors"), m_handles(std::make_unique<Handles>()) {
    std::vector<std::string> texts = arguments;
    texts.insert(texts.begin(), program.string());
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    constexpr int kMode = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, m_errors.c_str(), kMode, 0600);
    int ends[2] = {-1, -1};
    if (reader == Reader::Gone) {
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        ::close(ends[0]);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, m_output.c_str(), kMode, 0600);
    }
    // A background job's shell may ignore these, and a program keeps that.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGINT);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    if (::posix_spawn(&m_handles->process, program.c_str(), &actions, &attributes, pointers.data(), ::environ) != 0) {
        m_handles->process = -1;
        ADD_FAILURE() << program << " does not start";
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (reader == Reader::Gone) {
        ::close(ends[1]);
    }
}

Process::~Process() {
    if (m_handles->process > 0) {
        ::kill(m_handles->process, SIGKILL);
        Wait();
    }
}

bool Process::Interrupt() {
    // Without a process the number is -1, which to the system is every process that there is.
    EXPECT_GT(m_handles->process, 0);
    EXPECT_TRUE(m_handles->process > 0 && ::kill(m_handles->process, SIGINT) == 0);
    return true;
}

int Process::Wait() {
    int status = 0;
    EXPECT_EQ(::waitpid(m_handles->process, &status, 0), m_handles->process);
    m_handles->process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string Process::Output() const {
    return Contents(m_output);
}

std::string Process::Errors() const {
    return Contents(m_errors);
}

}  // namespace vx_testing
