// What an operation of the file readers gives: a value, or the reason why there is none. No thread rule of its own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace localmapi {

// Why an operation failed, in the terms that a caller can act on.
enum class ErrorCode : std::uint8_t {
    NotFound,      // no such object or property: an answer, not damage
    Unsupported,   // not a file of this kind, or a form of it that is not read
    Corrupt,       // the bytes contradict the format or each other
    TooLarge,      // sound as far as can be seen, but above a limit that the caller set
    Busy,          // another process holds the file exclusively: try again later
    AccessDenied,  // the user may not read the file
    ReadFailed,    // the system could not deliver bytes that the file is said to have
};

// `text` names the object and the reason ("block 0x1F4A at 0x2E400 fails its CRC"), without a full stop, so that
// whoever handles the failure can append what happens next.
struct Error {
    ErrorCode code;
    std::string text;
};

// A value of type T or an Error. The accessors require the side that they name.
template <class T>
class [[nodiscard]] Result {
public:
    // NOLINTNEXTLINE(google-explicit-constructor): `return value;` and `return error;` are the point of the type.
    Result(T value) : m_state(std::in_place_index<0>, std::move(value)) {}
    // NOLINTNEXTLINE(google-explicit-constructor)
    Result(Error error) : m_state(std::in_place_index<1>, std::move(error)) {}

    explicit operator bool() const noexcept { return m_state.index() == 0; }

    T& operator*() & noexcept { return *std::get_if<0>(&m_state); }
    const T& operator*() const& noexcept { return *std::get_if<0>(&m_state); }
    T&& operator*() && noexcept { return std::move(*std::get_if<0>(&m_state)); }
    T* operator->() noexcept { return std::get_if<0>(&m_state); }
    const T* operator->() const noexcept { return std::get_if<0>(&m_state); }

    const Error& Failure() const noexcept { return *std::get_if<1>(&m_state); }
    Error TakeFailure() noexcept { return std::move(*std::get_if<1>(&m_state)); }
    bool IsNotFound() const noexcept { return !*this && Failure().code == ErrorCode::NotFound; }

private:
    std::variant<T, Error> m_state;
};

// Success without a value, or an Error.
class [[nodiscard]] Status {
public:
    Status() = default;
    // NOLINTNEXTLINE(google-explicit-constructor)
    Status(Error error) : m_error(std::move(error)) {}

    explicit operator bool() const noexcept { return !m_error; }
    const Error& Failure() const noexcept { return *m_error; }
    Error TakeFailure() noexcept { return std::move(*m_error); }

private:
    std::optional<Error> m_error;
};

}  // namespace localmapi

// NOLINTBEGIN(bugprone-macro-parentheses): declarations and names cannot stand in parentheses

// Passes a failure of `expression` on to the caller, or goes on with its value:
//     VX_TRY_ASSIGN(const BlockEntry entry, blocks.Find(id));
#define VX_TRY_JOIN_(a, b) a##b
#define VX_TRY_JOIN(a, b)  VX_TRY_JOIN_(a, b)
#define VX_TRY_ASSIGN_(hold, declaration, expression) \
    auto hold = (expression);                         \
    if (!hold) {                                      \
        return hold.TakeFailure();                    \
    }                                                 \
    declaration = *std::move(hold)
#define VX_TRY_ASSIGN(declaration, expression) VX_TRY_ASSIGN_(VX_TRY_JOIN(tried, __LINE__), declaration, expression)

// The same for a Status.
#define VX_TRY(expression)                   \
    if (auto tried = (expression); !tried) { \
        return tried.TakeFailure();          \
    }                                        \
    static_assert(true)

// NOLINTEND(bugprone-macro-parentheses)
