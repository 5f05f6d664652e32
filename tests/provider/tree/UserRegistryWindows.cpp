#include "platform/Registry.h"
#include "testing/scripted_mapi/Values.h"
#include "tests/provider/tree/UserRegistry.h"

using scripted_mapi::Wide;

UserRegistry::UserRegistry(std::string_view key, std::string_view name, std::string_view text, bool terminated)
    : m_key("Software\\" + std::string(key)) {
    HKEY opened = nullptr;
    DWORD disposition = 0;
    RegCreateKeyExW(HKEY_CURRENT_USER, Wide(m_key).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &opened,
                    &disposition);
    m_isUsable = disposition == REG_CREATED_NEW_KEY;
    if (m_isUsable) {
        const CStringW value = Wide(text);
        const std::size_t units = value.size() + (terminated ? 1 : 0);
        RegSetValueExW(opened, Wide(name).c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                       static_cast<DWORD>(units * sizeof(WCHAR)));
    }
    RegCloseKey(opened);
}

UserRegistry::~UserRegistry() {
    if (m_isUsable) {
        RegDeleteKeyW(HKEY_CURRENT_USER, Wide(m_key).c_str());
    }
}
