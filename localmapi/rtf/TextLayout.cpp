#include "localmapi/rtf/TextLayout.h"

#include <algorithm>

namespace localmapi::rtf {

void TextLayout::PutPending() {
    if (!m_text.empty()) {
        if (m_lines > 0) {
            for (; m_lines > 0; --m_lines) {
                m_text += "\r\n"_w;
            }
        } else if (m_hasTab) {
            m_text.push_back('\t');
        } else if (m_hasSpace) {
            m_text.push_back(' ');
        }
    }
    if (m_hasMark) {
        m_text += "* "_w;
    }
    m_lines = 0;
    m_hasTab = false;
    m_hasSpace = false;
    m_hasMark = false;
    m_isPending = false;
    m_isAtStart = false;
    m_isAfterReturn = false;
    m_hasRowText = true;
}

void TextLayout::PutSpace(WCHAR space) {
    if (m_preformatted == 0) {
        m_hasSpace = true;
        m_isPending = true;
    } else if (space == '\r' || space == '\n') {
        const bool isSecondHalf = space == '\n' && m_isAfterReturn;
        if (!isSecondHalf && !m_isAtStart) {
            BreakLine();
        }
        m_isAtStart = m_isAtStart && space == '\r';
        m_isAfterReturn = space == '\r';
    } else {
        PutUnit(space);
    }
}

void TextLayout::Separate(std::size_t lines) {
    m_isPending = true;
    if (!m_isAtStart) {
        m_lines = std::max(m_lines, lines);
    }
}

void TextLayout::BreakLine() {
    m_isPending = true;
    ++m_lines;
}

void TextLayout::BeginItem() {
    Separate(1);
    m_hasMark = true;
    m_isAtStart = true;
}

void TextLayout::EndItem() {
    m_isAtStart = false;
    m_hasMark = false;
    Separate(1);
}

void TextLayout::BeginOrEndRow() {
    m_isAtStart = false;
    m_hasRowText = false;
    Separate(1);
}

void TextLayout::BeginCell() {
    EndCell();
    m_isAtStart = true;
}

// Blocks that end with their cell end no line.
void TextLayout::EndCell() {
    m_isAtStart = false;
    if (m_hasRowText) {
        m_isPending = true;
        m_lines = 0;
        m_hasTab = true;
    }
}

void TextLayout::BeginPreformatted() {
    Separate(2);
    ++m_preformatted;
    m_isAtStart = true;  // a line end right here is not shown
}

void TextLayout::EndPreformatted() {
    m_isAtStart = false;
    m_preformatted -= m_preformatted > 0 ? 1 : 0;
    Separate(2);
}

}  // namespace localmapi::rtf
