// A registry as a text file: regedit's syntax, read into a tree of keys. The text may hold anything; what cannot be
// understood is skipped line by line, and nothing that it says makes the tree larger than the limits allow.
#pragma once

#include "platform/WideText.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace vx_system {

struct RegistryLimits {
    std::size_t fileBytes = std::size_t{16}
                            << 20;   // bounds what is read into memory; a larger file counts as unreadable
    std::size_t keys = 100'000;      // a line of a few hundred bytes can name hundreds of keys
    std::size_t depth = 512;         // Windows' own limit; destroying a level is a stack frame
    std::size_t keyName = 255;       // UTF-16 units, Windows' own limit
    std::size_t valueName = 16'383;  // UTF-16 units, Windows' own limit
};

struct RegistryValue {
    CStringW name;  // as the file spells it; empty for the key's default value
    DWORD type;
    std::vector<BYTE> data;
};

// A key. What it holds is found by name without regard to case: the maps' keys went through FoldCase.
struct RegistryKey {
    CStringW name;  // as the file spells it first
    std::map<CStringW, RegistryValue> values;
    std::map<CStringW, std::unique_ptr<RegistryKey>> keys;
};

// The form in which names that differ only in case are equal: upper case, unit by unit.
[[nodiscard]] CStringW FoldCase(WideView name);

// The tree that `bytes` describe. The result's keys are the roots that occur, by their long names
// ("HKEY_LOCAL_MACHINE"). Understood are UTF-8 and, with a byte order mark, UTF-16 LE; the first line "Windows Registry
// Editor Version 5.00" may be missing, but a file of the older kind ("REGEDIT4", whose texts are in an unknown code
// page) gives no keys.
//
// Lines, with blanks around their parts and ';' before a comment:
//   [HKEY_CURRENT_USER\Software\Name]   makes the key and those above it, and is the key of the values that follow
//   [-HKEY_CURRENT_USER\Software\Name]  removes the key with all beneath it
//   "name"=..., @=...                   sets a value, replacing one of that name; @ is the default value
//   "text"                              REG_SZ, with \\ and \" for backslash and quote; other backslashes are themselves
//   dword:0000001f                      REG_DWORD, one to eight hexadecimal digits
//   hex:01,02  hex(7):61,00,\           REG_BINARY or the type in parentheses; a backslash at the end goes on below
//   -                                   removes the value
[[nodiscard]] std::unique_ptr<RegistryKey> ParseRegistry(std::string_view bytes, const RegistryLimits& limits = {});

}  // namespace vx_system
