// The conversions of platform/CodePage.h as tests call them: every call asks for the size first, and nothing may be
// written beyond the buffer.
#pragma once

#include "platform/CodePage.h"
#include "platform/LastError.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace vx_text_tests {

inline constexpr WCHAR kWideCanary = 0x5AA5;
inline constexpr char kCanary = 0x5A;

// What follows the input would complete a character that the input cuts off, if it were read.
inline int ToWide(UINT page, DWORD flags, std::string_view bytes, WCHAR* buffer, int size) {
    const std::string input = std::string(bytes) + "@@@@";
    return MultiByteToWideChar(page, flags, input.data(), static_cast<int>(bytes.size()), buffer, size);
}

inline int ToBytes(UINT page, DWORD flags, WideView text, char* buffer, int size) {
    return WideCharToMultiByte(page, flags, text.data(), static_cast<int>(text.size()), buffer, size, nullptr, nullptr);
}

// The text of `bytes`; empty when the conversion fails, which GetLastError then tells of.
inline CStringW Decode(UINT page, std::string_view bytes, DWORD flags = 0) {
    const int size = ToWide(page, flags, bytes, nullptr, 0);
    if (size == 0) {
        return {};
    }
    std::vector<WCHAR> buffer(static_cast<std::size_t>(size) + 1, kWideCanary);
    EXPECT_EQ(ToWide(page, flags, bytes, buffer.data(), size), size) << "page " << page << ": written, asked for";
    EXPECT_EQ(buffer.back(), kWideCanary) << "page " << page << " writes beyond the buffer";
    return {buffer.data(), static_cast<std::size_t>(size)};
}

inline std::string Encode(UINT page, WideView text, DWORD flags = 0) {
    const int size = ToBytes(page, flags, text, nullptr, 0);
    if (size == 0) {
        return {};
    }
    std::vector<char> buffer(static_cast<std::size_t>(size) + 1, kCanary);
    EXPECT_EQ(ToBytes(page, flags, text, buffer.data(), size), size) << "page " << page << ": written, asked for";
    EXPECT_EQ(buffer.back(), kCanary) << "page " << page << " writes beyond the buffer";
    return {buffer.data(), static_cast<std::size_t>(size)};
}

// The error of a decoding that fails; ERROR_SUCCESS when it does not.
inline DWORD DecodeError(UINT page, std::string_view bytes, DWORD flags) {
    SetLastError(ERROR_SUCCESS);
    return ToWide(page, flags, bytes, nullptr, 0) == 0 ? GetLastError() : ERROR_SUCCESS;
}

// Every buffer that is too small makes the conversion fail, holds a beginning of the result and nothing behind it.
inline void ExpectTooSmallBuffersToFail(UINT page, std::string_view bytes, WideView text) {
    for (std::size_t size = 1; size < text.size(); ++size) {
        std::vector<WCHAR> buffer(size + 1, kWideCanary);
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(ToWide(page, 0, bytes, buffer.data(), static_cast<int>(size)), 0) << "room for " << size;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
        EXPECT_EQ(buffer.back(), kWideCanary) << "room for " << size;
        for (std::size_t i = 0; i < size; ++i) {
            EXPECT_TRUE(buffer[i] == text[i] || buffer[i] == kWideCanary) << "unit " << i << " of " << size;
        }
    }
    for (std::size_t size = 1; size < bytes.size(); ++size) {
        std::vector<char> buffer(size + 1, kCanary);
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(ToBytes(page, 0, text, buffer.data(), static_cast<int>(size)), 0) << "room for " << size;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
        EXPECT_EQ(buffer.back(), kCanary) << "room for " << size;
        for (std::size_t i = 0; i < size; ++i) {
            EXPECT_TRUE(buffer[i] == bytes[i] || buffer[i] == kCanary) << "byte " << i << " of " << size;
        }
    }
}

// Bytes that end anywhere give the text up to there, and at most three units for what is cut off.
inline void ExpectCutsToKeepTheBeginning(UINT page, std::string_view bytes, WideView text) {
    for (std::size_t cut = 1; cut < bytes.size(); ++cut) {
        const CStringW part = Decode(page, bytes.substr(0, cut));
        std::size_t same = 0;
        while (same < part.size() && same < text.size() && part[same] == text[same]) {
            ++same;
        }
        EXPECT_GE(same + 3, part.size()) << "cut behind " << cut;
    }
}

// A text in a page, and the same in UTF-16: exact both ways.
struct Sample {
    const char* name;
    UINT page;
    std::string_view bytes;
    CStringW text;
};

inline void ExpectExactBothWays(const Sample& sample) {
    SCOPED_TRACE(testing::Message() << "page " << sample.page << ", " << sample.name);
    EXPECT_EQ(Decode(sample.page, sample.bytes), sample.text);
    EXPECT_EQ(Encode(sample.page, sample.text), sample.bytes);
    ExpectTooSmallBuffersToFail(sample.page, sample.bytes, sample.text);
    ExpectCutsToKeepTheBeginning(sample.page, sample.bytes, sample.text);
}

// Invalid UTF-8, and what becomes of it.
struct BrokenUtf8 {
    const char* name;
    std::string_view bytes;
    CStringW text;
};

inline void ExpectReplaced(const BrokenUtf8& row) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Decode(CP_UTF8, row.bytes), row.text);
    EXPECT_EQ(DecodeError(CP_UTF8, row.bytes, MB_ERR_INVALID_CHARS), static_cast<DWORD>(ERROR_NO_UNICODE_TRANSLATION));
}

// Writes back what it reads, for each byte and each pair of bytes of a page that stands for something.
inline void ExpectRepertoireToRoundTrip(UINT page) {
    SCOPED_TRACE(testing::Message() << "page " << page);
    int characters = 0;
    for (unsigned code = 0; code < 0x10000; ++code) {
        const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
        const std::string_view character = code < 0x100 ? std::string_view(bytes + 1, 1) : std::string_view(bytes, 2);
        WCHAR text[2] = {};
        const int length = ToWide(page, 0, character, text, 2);
        if (length != 1) {
            continue;  // two characters, not one of two bytes
        }
        char again[8] = {};
        BOOL usedDefault = FALSE;
        const int size = WideCharToMultiByte(page, 0, text, 1, again, 8, nullptr, &usedDefault);
        WCHAR twice[2] = {};
        ASSERT_EQ(ToWide(page, 0, {again, static_cast<std::size_t>(size)}, twice, 2), 1) << std::hex << code;
        ASSERT_EQ(twice[0], text[0]) << std::hex << code;
        ASSERT_FALSE(usedDefault && text[0] != '?' && text[0] != 0x30FB) << std::hex << code;
        ++characters;
    }
    EXPECT_GE(characters, 128);
}

}  // namespace vx_text_tests
