#include "provider/VxConnectable.h"

#include "provider/Common/Log.h"

namespace {

constexpr auto& kSourcePath = "VxConnectable.cpp"_w;

}  // namespace

CVxConnectable::~CVxConnectable() {
    if (m_parent != nullptr && m_parent->m_activeChild == this) {
        m_parent->m_activeChild = nullptr;
    }
}

CVxDomain* CVxConnectable::GetDomain() {
    if (m_parent == nullptr) {
        VX_LOG('E') << Vx::LogMsg("m_parent == NULL in GetDomain()"_w);
        return nullptr;
    }
    return m_parent->GetDomain();
}

bool CVxConnectable::EnsureConnected() {
    if (IsConnected()) {
        return true;
    }
    if (m_parent != nullptr && !m_parent->EnsureChainIsConnected(this)) {
        RegisteError(VxErrorConnect);
    }
    if (!Connect()) {
        RegisteError(VxErrorConnect);
        return false;
    }
    ClearError(VxErrorConnect);
    return true;
}

bool CVxConnectable::EnsureDisconnected() {
    if (m_activeChild != nullptr) {
        m_activeChild->EnsureDisconnected();
        m_activeChild = nullptr;
    }
    Disconnect();
    return true;
}

bool CVxConnectable::EnsureChildDisconnected() {
    if (m_activeChild != nullptr) {
        m_activeChild->EnsureChildDisconnected();
        m_activeChild->Disconnect();
        m_activeChild = nullptr;
    }
    return true;
}

bool CVxConnectable::EnsureChainIsConnected(CVxConnectable* child) {
    if (m_activeChild != nullptr && m_activeChild != child) {
        m_activeChild->EnsureDisconnected();
    }
    m_activeChild = child;
    return EnsureConnected();
}

bool CVxConnectable::Connect() {
    if (m_connectState == 0) {
        if (!OnConnect()) {
            return false;
        }
        m_connectState = 1;
    }
    return true;
}

void CVxConnectable::Disconnect() {
    if (IsConnected()) {
        OnDisconnect();
        m_connectState = 0;
    }
}

void CVxConnectable::RegisteError(std::int64_t bits) {
    m_errors |= bits;
    VX_LOG('I') << Vx::LogMsg("Register error %I64d"_w, bits);
}

void CVxConnectable::ClearError(std::int64_t bits) {
    if (HasErrors(bits)) {
        VX_LOG('I') << Vx::LogMsg("Clear error %I64d"_w, bits);
        m_errors &= ~bits;
    }
}
