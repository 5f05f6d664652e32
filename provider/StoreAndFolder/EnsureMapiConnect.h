// folder_ensure_mapi_connect: opens a store or a folder for a scope, and closes it again only if it was not open before.
#pragma once

template <typename T>
class folder_ensure_mapi_connect {
public:
    // `object` outlives the guard. Nothing is opened yet.
    explicit folder_ensure_mapi_connect(T& object) noexcept : m_object(object) {}
    folder_ensure_mapi_connect(const folder_ensure_mapi_connect&) = delete;
    folder_ensure_mapi_connect& operator=(const folder_ensure_mapi_connect&) = delete;
    ~folder_ensure_mapi_connect() { MapiDisconnect(); }

    // Whether the object is open now.
    bool MapiConnect() {
        m_owns = !m_object.IsMapiConnected();
        m_connected = !m_owns || m_object.MapiConnect();
        return m_connected;
    }

    // Closes what MapiConnect has opened. A second call does nothing.
    void MapiDisconnect() {
        if (m_connected && m_owns) {
            m_connected = false;
            m_object.MapiDisconnect();
        }
    }

private:
    T& m_object;
    bool m_connected = false;
    bool m_owns = false;  // the connection is the guard's own
};
