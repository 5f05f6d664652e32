// What every operation of COutlookInstance has around it: a name for the log, and a wall that no exception passes.
#pragma once

#include "platform/ResultCodes.h"
#include "platform/Variant.h"
#include "platform/WideText.h"
#include "provider/Common/Log.h"

#include <utility>

// One call of an operation. `function` and `failed` are constants; kSourcePath of the including source is `file`.
class FacadeCall {
public:
    FacadeCall(const WCHAR* file, int line, const WCHAR* function, const WCHAR* failed) noexcept
        : m_file(file), m_line(line), m_function(function), m_failed(failed) {}

    // The result of `body`; E_FAIL and the operation's line when anything is thrown. Where the compiler makes exceptions
    // of the processor's faults, those too.
    template <typename Body>
    HRESULT Run(Body&& body) const noexcept {
        try {
            return std::forward<Body>(body)();
        } catch (...) {
            Log('E', m_failed);
            return E_FAIL;
        }
    }

    // The same for an operation that needs a domain: `out`, a VARIANT or a text, becomes empty, and `body` is called with
    // the domain. Without one it is E_FAIL, with a line.
    template <typename Out, typename Domain, typename Body>
    HRESULT Query(Out& out, Domain* domain, Body&& body) const noexcept {
        return Run([&]() -> HRESULT {
            Empty(out);
            const HRESULT hr = RequireDomain(domain);
            return FAILED(hr) ? hr : body(*domain);
        });
    }

    // A line of the operation.
    void Log(char level, WideView text) const noexcept { Vx::LogEntry(m_file, m_line, m_function, level) << text; }
    void Log(char level, const Vx::LogMsg& text) const noexcept { Log(level, text.Text()); }

    // The answer to a refused argument: E_INVALIDARG, with a line that says why.
    HRESULT Refuse(const Vx::LogMsg& text) const noexcept {
        Log('E', text);
        return E_INVALIDARG;
    }

    // E_FAIL, with a line, unless there is a domain.
    HRESULT RequireDomain(const void* domain) const noexcept {
        if (domain != nullptr) {
            return S_OK;
        }
        Log('E', "Not initialized!"_w);
        return E_FAIL;
    }

private:
    static void Empty(VARIANT* const& out) noexcept { VariantInit(out); }
    static void Empty(CStringW& out) noexcept { out.clear(); }

    const WCHAR* m_file;
    int m_line;
    const WCHAR* m_function;
    const WCHAR* m_failed;
};

// `call` for the operation `name`, whose line for the unexpected is "<name> failed."
#define VX_FACADE_CALL(call, name) VX_FACADE_CALL_AS(call, name, #name " failed.")

// The same with another such line.
#define VX_FACADE_CALL_AS(call, name, failed) \
    const FacadeCall call(kSourcePath, __LINE__, "COutlookInstance::" #name ""_w, failed ""_w)
