// _bstr_t: owns one BSTR, for texts on their way into and out of VARIANTs. Null and empty are different texts to it, as
// they are in a VARIANT: null is "not given".
//
// One class on every system; it shares the name and the spirit of a compiler vendor's own, of which it has what is used
// here. A copy is a text of its own. No thread may change one that another reads.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/Bstr.h"
#include "platform/WideText.h"

#include <compare>
#include <limits>
#include <new>
#include <utility>

class _bstr_t {
public:
    _bstr_t() noexcept = default;

    // Copies a zero-terminated text; null stays null. Throws std::bad_alloc, as everything here that copies.
    // NOLINTNEXTLINE(google-explicit-constructor): a text is a text.
    _bstr_t(const WCHAR* text) : m_text(text == nullptr ? nullptr : Checked(SysAllocString(text))) {}

    // Copies a text with the zeros inside it; never null.
    // NOLINTNEXTLINE(google-explicit-constructor)
    _bstr_t(const CStringW& text) : m_text(Copied(text)) {}

    _bstr_t(const _bstr_t& other) : m_text(other.copy()) {}
    _bstr_t(_bstr_t&& other) noexcept : m_text(other.Detach()) {}
    _bstr_t& operator=(_bstr_t other) noexcept {
        std::swap(m_text, other.m_text);
        return *this;
    }
    ~_bstr_t() { SysFreeString(m_text); }

    // Whether there is no text, which an empty one is not.
    bool IsNull() const noexcept { return m_text == nullptr; }

    // Code units, without the terminator; 0 for null.
    UINT length() const noexcept { return SysStringLen(m_text); }

    // The text, zero-terminated, lent until this object changes; null for null. Explicit, so that the text of a
    // temporary is not kept by accident.
    explicit operator const WCHAR*() const noexcept { return m_text; }

    // A copy of the text; empty for null.
    // NOLINTNEXTLINE(google-explicit-constructor)
    operator CStringW() const { return CStringW(View()); }

    // The text, lent until this object changes; empty for null.
    WideView View() const noexcept { return m_text == nullptr ? WideView() : WideView(m_text, SysStringLen(m_text)); }

    // A copy that the caller frees with SysFreeString; null for null.
    BSTR copy() const { return m_text == nullptr ? nullptr : Checked(SysAllocStringLen(m_text, SysStringLen(m_text))); }

    // Replaces the text by a copy of `text`, which stays the caller's.
    void Assign(BSTR text) {
        _bstr_t fresh;
        fresh.m_text = text == nullptr ? nullptr : Checked(SysAllocStringLen(text, SysStringLen(text)));
        std::swap(m_text, fresh.m_text);
    }

    // Frees the text and takes over `text`.
    void Attach(BSTR text) noexcept {
        if (text != m_text) {
            SysFreeString(std::exchange(m_text, text));
        }
    }

    // Hands the text over to the caller, who frees it with SysFreeString, and is null afterwards.
    [[nodiscard]] BSTR Detach() noexcept { return std::exchange(m_text, nullptr); }

    // By code units, zeros included; null comes before every text and equals null only.
    friend bool operator==(const _bstr_t& a, const _bstr_t& b) noexcept {
        return a.IsNull() == b.IsNull() && a.View() == b.View();
    }
    friend std::strong_ordering operator<=>(const _bstr_t& a, const _bstr_t& b) noexcept {
        if (a.IsNull() || b.IsNull()) {
            return !a.IsNull() <=> !b.IsNull();
        }
        return a.View().compare(b.View()) <=> 0;
    }

private:
    static BSTR Checked(BSTR text) {
        if (text == nullptr) {
            throw std::bad_alloc();
        }
        return text;
    }

    static BSTR Copied(const CStringW& text) {
        if (text.size() > std::numeric_limits<UINT>::max()) {
            throw std::bad_alloc();
        }
        return Checked(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    }

    BSTR m_text = nullptr;  // owned
};
