// What a header declares, put into words: values, sizes, offsets, vtable slots and signatures, so that two headers that
// cannot be included together can be compared.
#pragma once

#include "platform/Guid.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace vx_mapi_facts {

struct Fact {
    std::string name;
    std::string value;
};
using Facts = std::vector<Fact>;

Facts OurFacts();
Facts SdkFacts();

inline std::string Hexadecimal(std::uint64_t number) {
    std::ostringstream text;
    text << "0x" << std::hex << std::uppercase << number;
    return text.str();
}

// A constant of up to 32 bits, whatever its signedness.
template <typename T>
std::string ValueText(T value) {
    return Hexadecimal(static_cast<std::uint32_t>(value));
}

inline std::string GuidText(const GUID& guid) {
    std::string text = Hexadecimal(guid.Data1) + " " + Hexadecimal(guid.Data2) + " " + Hexadecimal(guid.Data3);
    for (const auto byte : guid.Data4) {
        text += " " + Hexadecimal(byte);
    }
    return text;
}

template <typename T>
std::string SizeText() {
    return std::to_string(sizeof(T)) + " bytes, aligned to " + std::to_string(alignof(T));
}

// One parameter or result: "*" for each level of pointer, then "s" and a size for a structure, "i" and a size for what
// is an integer, "f" for a function, "v" for nothing. What a pointer points at counts only when it is a pointer again.
template <typename T>
std::string KindText() {
    if constexpr (std::is_pointer_v<T>) {
        using Target = std::remove_cv_t<std::remove_pointer_t<T>>;
        if constexpr (std::is_pointer_v<Target>) {
            return "*" + KindText<Target>();
        } else {
            return std::is_function_v<Target> ? "*f" : "*";
        }
    } else if constexpr (std::is_void_v<T>) {
        return "v";
    } else if constexpr (std::is_class_v<T>) {
        return "s" + std::to_string(sizeof(T));
    } else {
        static_assert(std::is_integral_v<T> || std::is_enum_v<T>);
        return "i" + std::to_string(sizeof(T));
    }
}

template <typename Function>
struct Signature;

template <typename Result, typename... Parameters>
struct Signature<Result(Parameters...)> {
    static std::string Text() {
        return KindText<Result>() + "(" + (std::string() + ... + (KindText<Parameters>() + " ")) + ")";
    }
};

template <typename Interface, typename Result, typename... Parameters>
struct Signature<Result (Interface::*)(Parameters...)> : Signature<Result(Parameters...)> {};

// The place of a virtual method in the vtable. A pointer to one holds, in the ABI of all our compilers, one more than
// its offset there ([Itanium C++ ABI] 2.3).
template <typename Method>
std::size_t SlotOf(Method method) {
    struct Parts {
        std::uintptr_t offset;
        std::ptrdiff_t adjustment;
    };
    return (std::bit_cast<Parts>(method).offset - 1) / sizeof(void*);
}

template <typename Method>
std::string SlotText(Method method) {
    return "slot " + std::to_string(SlotOf(method)) + ": " + Signature<Method>::Text();
}

}  // namespace vx_mapi_facts
