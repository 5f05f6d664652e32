#include "platform/Registry.h"
#include "tests/provider/mapi/import/ImportTestSupport.h"

TestRegistry::TestRegistry(std::vector<RegistryRow> rows) : m_rows(std::move(rows)) {
    for (const RegistryRow& row : m_rows) {
        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, Wide(row.key).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr);
        RegSetValueExW(key, Wide(row.name).c_str(), 0, row.type, reinterpret_cast<const BYTE*>(row.bytes.data()),
                       static_cast<DWORD>(row.bytes.size()));
        RegCloseKey(key);
    }
}

TestRegistry::~TestRegistry() {
    for (const RegistryRow& row : m_rows) {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, Wide(row.key).c_str());
    }
}
