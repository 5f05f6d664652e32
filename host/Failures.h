// How the program ends, and what its parts throw to end it.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace vxhost {

// The program's exit status.
enum class Status : int {
    Done = 0,           // all was read
    Usage = 1,          // the arguments make no sense
    NotOpened = 2,      // a source could not be opened, or the output not written
    Incomplete = 3,     // finished, but something could not be found or read
    Interrupted = 130,  // by the user, or by a reader of the output who has gone
};

// Ends the program: what happened (the file, the reason), and what the user can do about it.
class Failure : public std::runtime_error {
public:
    Failure(Status status, const std::string& what, std::string advice)
        : std::runtime_error(what), m_status(status), m_advice(std::move(advice)) {}

    Status Kind() const noexcept { return m_status; }
    const std::string& Advice() const noexcept { return m_advice; }

private:
    Status m_status;
    std::string m_advice;
};

// Ends the program without a word: Ctrl-C, or nobody reads the output any more.
class Interrupted : public std::exception {
public:
    const char* what() const noexcept override { return "interrupted"; }
};

}  // namespace vxhost
