// The registry's text: any bytes give a tree within the limits, and the tree, written out again in the plainest spelling
// of every name and value, reads back as the same tree.
#include "platform/linux/system/RegistryText.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using vx_system::RegistryKey;
using vx_system::RegistryValue;

CStringW Ascii(const std::string& text) {
    return CStringW(text.begin(), text.end());
}

CStringW Quoted(const CStringW& name) {
    CStringW out(1, '"');
    for (const WCHAR unit : name) {
        if (unit == '"' || unit == '\\') {
            out.push_back('\\');
        }
        out.push_back(unit);
    }
    return out + WCHAR{'"'};
}

CStringW Line(const RegistryValue& value) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string data = "=hex(";
    for (int shift = 28; shift >= 0; shift -= 4) {
        data += kDigits[value.type >> shift & 15];
    }
    data += "):";
    for (const BYTE byte : value.data) {
        data += kDigits[byte >> 4];
        data += kDigits[byte & 15];
        data += ',';
    }
    return Quoted(value.name) + Ascii(data + "\n");
}

void Write(const RegistryKey& key, const CStringW& path, CStringW& out) {
    out += WCHAR{'['} + path + Ascii("]\n");
    for (const auto& [folded, value] : key.values) {
        out += Line(value);
    }
    for (const auto& [folded, child] : key.keys) {
        Write(*child, path + WCHAR{'\\'} + child->name, out);
    }
}

std::string Utf16Bytes(const CStringW& text) {
    std::string bytes = "\xFF\xFE";
    for (const WCHAR unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

bool AreEqual(const RegistryKey& a, const RegistryKey& b) {
    const auto sameValue = [](const auto& x, const auto& y) {
        return x.first == y.first && x.second.name == y.second.name && x.second.type == y.second.type
               && x.second.data == y.second.data;
    };
    const auto sameKey = [](const auto& x, const auto& y) {
        return x.first == y.first && AreEqual(*x.second, *y.second);
    };
    return a.name == b.name && std::equal(a.values.begin(), a.values.end(), b.values.begin(), b.values.end(), sameValue)
           && std::equal(a.keys.begin(), a.keys.end(), b.keys.begin(), b.keys.end(), sameKey);
}

std::size_t Count(const RegistryKey& key) {
    std::size_t count = 1;
    for (const auto& [folded, child] : key.keys) {
        count += Count(*child);
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Low limits, so that the fuzzer reaches them; the writing above costs depth times keys.
    const vx_system::RegistryLimits limits = {.keys = 64, .depth = 16, .keyName = 20, .valueName = 20};
    const auto tree = vx_system::ParseRegistry({reinterpret_cast<const char*>(data), size}, limits);
    if (Count(*tree) > limits.keys + 1) {
        std::abort();
    }
    CStringW text;
    for (const auto& [folded, root] : tree->keys) {
        Write(*root, root->name, text);
    }
    if (!AreEqual(*tree, *vx_system::ParseRegistry(Utf16Bytes(text), limits))) {
        std::abort();
    }
    return 0;
}
