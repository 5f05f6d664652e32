// Trees to copy, and what a tree says: every part that a deep copy has to reach, as text. The text is made without any
// of the code under test.
#pragma once

#include "mapi/MapiRestrictions.h"

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <vector>

std::string Describe(const SPropValue& prop);
std::string Describe(const SRestriction& restriction);
std::string Describe(const ACTIONS& actions);

// Owns what the samples point at. What it hands out lives as long as it; Scribble overwrites all of it, so that a copy
// which still points here shows.
class Samples {
public:
    template <typename T>
    T* Make(std::size_t count = 1) {
        const std::size_t units = (sizeof(T) * count + sizeof(std::max_align_t) - 1) / sizeof(std::max_align_t) + 1;
        m_blocks.push_back({std::make_unique<std::max_align_t[]>(units), units});
        return new (m_blocks.back().memory.get()) T[count]();
    }

    LPSPropValue Long(LONG value);
    LPSPropValue Text(const char* text);
    LPENTRYID EntryId(const char* bytes);
    // An array of nodes as one block.
    LPSRestriction Array(std::vector<SRestriction> nodes);

    // One restriction that holds a node of every kind.
    LPSRestriction EveryRestriction();
    // Rules' actions of every kind.
    LPACTIONS EveryAction();
    // A restriction within so many NOTs.
    LPSRestriction Nested(std::size_t depth);

    void Scribble();

private:
    struct Block {
        std::unique_ptr<std::max_align_t[]> memory;
        std::size_t units;
    };
    std::vector<Block> m_blocks;
};
