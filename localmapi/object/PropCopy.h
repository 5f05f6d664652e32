// CopyTo and CopyProps: the properties of an object of this library into any object that can be written through its
// published interface.
#pragma once

#include "localmapi/com/ComObject.h"
#include "mapi/MapiInterfaces.h"
#include "mapi/MapiTypes.h"

#include <span>
#include <vector>

namespace localmapi {

class PropCore;

struct CopyRequest {
    bool all = true;  // all but `tags`, else only `tags`
    const SPropTagArray* tags = nullptr;
    std::span<const IID> excludedInterfaces;
    IMAPIProgress* progress = nullptr;
    ULONG flags = 0;  // MAPI_NOREPLACE; MAPI_MOVE is not possible
};

// True when the request asks for this property id.
bool IsAskedFor(const CopyRequest& request, ULONG id);

// What could not be copied, as SPropProblemArray tells it.
class CopyProblems {
public:
    void Add(ULONG tag, HRESULT result) { m_problems.push_back({m_next++, tag, result}); }

    // Gives them to the caller of the method; a null `problems` drops them. S_OK, as problems are no failure.
    HRESULT Give(SPropProblemArray** problems) const;

private:
    std::vector<SPropProblem> m_problems;
    ULONG m_next = 0;
};

// Copies values: small ones in groups by SetProps, texts and binaries above PropCore::kLargestValue by streams, named
// ones under the id that the target has for the name. Objects (PT_OBJECT) and what every object computes for itself are
// left out. A value that the target refuses becomes a problem; the rest goes on.
HRESULT CopyValues(PropCore& from, const CopyRequest& request, IMAPIProp& to, CopyProblems& problems);

// All of CopyTo for an object that is its properties.
HRESULT CopyProperties(PropCore& from, const CopyRequest& request, IMAPIProp* to, LastFailure& failure,
                       SPropProblemArray** problems);

}  // namespace localmapi
