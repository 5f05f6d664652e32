// Text of HTML as it is put together: white space collapses, blocks and cells keep their distance. One thread at a time.
#pragma once

#include "platform/WideText.h"

#include <cstddef>
#include <utility>

namespace localmapi::rtf {

class TextLayout {
public:
    // What is shown, without white space.
    void Put(WideView text) {
        BeforeText();
        m_text.append(text);
    }
    void PutUnit(WCHAR unit) {
        BeforeText();
        m_text.push_back(unit);
    }

    // A space, tab or end of line in the source.
    void PutSpace(WCHAR space);

    // Blocks: the text so far and what follows are `lines` line ends apart at least. Not at the start of a cell or item.
    void Separate(std::size_t lines);

    // One more line end.
    void BreakLine();

    void BeginItem();
    void EndItem();
    void BeginOrEndRow();
    void BeginCell();
    void EndCell();
    void BeginPreformatted();
    void EndPreformatted();

    CStringW Take() { return std::move(m_text); }

private:
    void BeforeText() {
        if (m_isPending) {
            PutPending();
        }
    }
    void PutPending();

    CStringW m_text;

    // What stands between the text so far and the next; lines count more than a tab, and that more than a space. All
    // of it is forgotten at the end, and at the beginning but for the mark.
    bool m_isPending = true;
    std::size_t m_lines = 0;
    bool m_hasTab = false;
    bool m_hasSpace = false;
    bool m_hasMark = false;  // of an item of a list

    bool m_isAtStart = false;        // nothing has come since a cell, an item or preformatted text began
    bool m_hasRowText = false;       // text has come since the row began
    std::size_t m_preformatted = 0;  // such elements around
    bool m_isAfterReturn = false;    // the last thing in preformatted text was a carriage return
};

}  // namespace localmapi::rtf
