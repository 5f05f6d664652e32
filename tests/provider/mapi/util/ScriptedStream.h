// A stream that gives what a test wants it to: bytes in pieces, failures, false claims.
#pragma once

#include "testing/StubInterfaces.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vx_testing {

class ScriptedStream : public StubStream {
public:
    static constexpr std::size_t kNever = static_cast<std::size_t>(-1);

    std::vector<BYTE> bytes;
    std::size_t position = 0;
    bool endless = false;             // zeros without end, in place of `bytes`
    ULONG largestPiece = 0xFFFFFFFF;  // no read gives more
    ULONG excess = 0;                 // what a full read claims beyond what it gave
    std::size_t failAt = kNever;      // the position at which reading fails
    HRESULT readFailure = STG_E_READFAULT;
    std::uint64_t claimedSize = 0;
    HRESULT statResult = S_OK;
    HRESULT seekResult = S_OK;

    // What was asked.
    int reads = 0;
    DWORD statFlag = 0;

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override {
        ++reads;
        *read = 0;
        if (position >= failAt) {
            return readFailure;
        }
        const std::size_t left = endless ? size : bytes.size() - std::min(position, bytes.size());
        const std::size_t given = std::min<std::size_t>({left, size, largestPiece});
        if (endless) {
            std::fill_n(static_cast<BYTE*>(buffer), given, BYTE{0});
        } else {
            std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() - left), given,
                        static_cast<BYTE*>(buffer));
        }
        position += given;
        *read = static_cast<ULONG>(given) + (given == size ? excess : 0);
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER*) override {
        if (SUCCEEDED(seekResult) && origin == STREAM_SEEK_SET) {
            position = static_cast<std::size_t>(move.QuadPart);
        }
        return seekResult;
    }

    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flag) override {
        statFlag = flag;
        *stat = {};
        stat->cbSize.QuadPart = claimedSize;
        return statResult;
    }
};

}  // namespace vx_testing
