#include "tests/provider/tree/UserRegistry.h"

#include <cstdio>
#include <cstdlib>

UserRegistry::UserRegistry(std::string_view key, std::string_view name, std::string_view text, bool terminated)
    : m_key(key) {
    std::string content = "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\" + m_key + "]\n\""
                          + std::string(name) + "\"=hex(1):";
    for (const char unit : text) {
        char digits[8];
        std::snprintf(digits, sizeof(digits), "%02x,00,", static_cast<unsigned>(static_cast<unsigned char>(unit)));
        content += digits;
    }
    content += terminated ? "00,00\n" : "\n";
    if (!terminated) {
        content.erase(content.size() - 2, 1);  // the last comma
    }
    WriteFile(m_folder.File("registry.reg"), content);
    ::setenv("VX_REGISTRY", (m_folder.Path() / "registry.reg").c_str(), 1);
}

UserRegistry::~UserRegistry() {
    ::unsetenv("VX_REGISTRY");
}
