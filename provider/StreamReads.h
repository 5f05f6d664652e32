// Reading the streams of other makers, and copying them into files: what the bodies of CMapiUtil share.
#pragma once

#include "platform/Storage.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <span>

namespace vx_streams {

// One read that gives at most what was asked for, whatever the stream claims.
inline HRESULT ReadPiece(IStream* stream, BYTE* buffer, ULONG size, ULONG& read) {
    read = 0;
    const HRESULT hr = stream->Read(buffer, size, &read);
    read = std::min(read, size);
    return hr;
}

struct CopyResult {
    HRESULT lastRead;
    bool allWritten;  // false: the file took no more
};

// Copies from the stream's position, a buffer full at a time, until a read gives nothing or fails, or a write fails.
inline CopyResult CopyToFile(IStream* stream, std::ofstream& file, std::span<BYTE> buffer) {
    for (;;) {
        ULONG read = 0;
        const HRESULT hr = ReadPiece(stream, buffer.data(), static_cast<ULONG>(buffer.size()), read);
        if (FAILED(hr) || read == 0) {
            file.flush();
            return {hr, file.good()};
        }
        if (!file.write(reinterpret_cast<const char*>(buffer.data()), static_cast<std::streamsize>(read))) {
            return {hr, false};
        }
    }
}

}  // namespace vx_streams
