#include "tests/provider/mapi/import/ImportTestSupport.h"

#include <cstdio>
#include <cstdlib>
#include <map>

TestRegistry::TestRegistry(std::vector<RegistryRow> rows) : m_rows(std::move(rows)) {
    std::map<std::string, std::string> keys;
    for (const RegistryRow& row : m_rows) {
        std::string& lines = keys[row.key];
        lines += (row.name.empty() ? "@" : "\"" + row.name + "\"") + "=hex(";
        char number[16];
        std::snprintf(number, sizeof(number), "%x):", row.type);
        lines += number;
        for (std::size_t i = 0; i < row.bytes.size(); ++i) {
            std::snprintf(number, sizeof(number), "%s%02x", i == 0 ? "" : ",",
                          static_cast<unsigned>(static_cast<unsigned char>(row.bytes[i])));
            lines += number;
        }
        lines += "\n";
    }
    std::string text = "Windows Registry Editor Version 5.00\n";
    for (const auto& [key, lines] : keys) {
        text += "\n[HKEY_LOCAL_MACHINE\\" + key + "]\n" + lines;
    }
    WriteFile(m_folder.File("registry.reg"), text);
    ::setenv("VX_REGISTRY", (m_folder.Path() / "registry.reg").c_str(), 1);
}

TestRegistry::~TestRegistry() {
    ::unsetenv("VX_REGISTRY");
}
