// The RTF in a compressed stream as a stream of its own: WrapCompressedRTFStream.
#pragma once

#include "localmapi/com/ComPtr.h"
#include "mapi/MapiTypes.h"
#include "platform/Storage.h"

namespace localmapi {

// `flags`: without MAPI_MODIFY the stream is read, in pieces and forwards (it may be sought back to its beginning, or
// forwards); a damaged value gives its beginning and then MAPI_E_CORRUPT_DATA. With MAPI_MODIFY what is written is
// collected, and put into `compressed` in place of what that held, at Commit or at the last Release; compressed unless
// STORE_UNCOMPRESSED_RTF says otherwise. MAPI_E_CORRUPT_DATA when a stream to be read begins as no compressed RTF does.
HRESULT WrapRtf(IStream& compressed, ULONG flags, ComPtr<IStream>& plain);

}  // namespace localmapi
