#include "localmapi/pst/ndb/Inflate.h"

#include <limits>
#include <new>

#define ZLIB_CONST  // input through pointers to const
#include <zlib.h>

namespace localmapi::pst {

namespace {

// Owns zlib's state for one stream.
class Inflater {
public:
    explicit Inflater(int windowBits) {
        if (inflateInit2(&m_stream, windowBits) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() { inflateEnd(&m_stream); }

    bool Run(ByteView in, Bytes& out) {
        m_stream.next_in = reinterpret_cast<const Bytef*>(in.Data());
        m_stream.avail_in = static_cast<uInt>(in.Size());
        m_stream.next_out = reinterpret_cast<Bytef*>(out.data());
        m_stream.avail_out = static_cast<uInt>(out.size());
        return inflate(&m_stream, Z_FINISH) == Z_STREAM_END && m_stream.avail_out == 0;
    }

private:
    z_stream m_stream{};
};

constexpr int kBareStream = -MAX_WBITS;

}  // namespace

std::optional<Bytes> Inflate(ByteView compressed, std::size_t size) {
    if (compressed.Size() > std::numeric_limits<uInt>::max() || size > std::numeric_limits<uInt>::max()) {
        return std::nullopt;
    }
    Bytes out(size);
    for (const int windowBits : {MAX_WBITS, kBareStream}) {
        if (Inflater(windowBits).Run(compressed, out)) {
            return out;
        }
    }
    return std::nullopt;
}

}  // namespace localmapi::pst
