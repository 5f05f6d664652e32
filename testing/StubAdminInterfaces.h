// Stubs of the interfaces that StubInterfaces.h lacks: containers, the address book, and the administration of profiles.
#pragma once

#include "mapi/MapiProfileInterfaces.h"
#include "testing/StubInterfaces.h"

namespace vx_testing {

using StubMailUser = StubMapiProp<IMailUser>;
using StubProfSect = StubMapiProp<IProfSect>;

template <typename Interface>
class StubContainer : public StubMapiProp<Interface> {
public:
    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG, LPMAPITABLE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG*, LPUNKNOWN*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override {
        return E_NOTIMPL;
    }
};

class StubFolder : public StubContainer<IMAPIFolder> {
public:
    HRESULT STDMETHODCALLTYPE CreateMessage(LPCIID, ULONG, LPMESSAGE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyMessages(LPENTRYLIST, LPCIID, LPVOID, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE DeleteMessages(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateFolder(ULONG, LPTSTR, LPTSTR, LPCIID, ULONG, IMAPIFolder**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CopyFolder(ULONG, LPENTRYID, LPCIID, LPVOID, LPTSTR, ULONG_PTR, LPMAPIPROGRESS,
                                         ULONG) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE DeleteFolder(ULONG, LPENTRYID, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetReadFlags(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMessageStatus(ULONG, LPENTRYID, ULONG, ULONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetMessageStatus(ULONG, LPENTRYID, ULONG, ULONG, ULONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SaveContentsSort(LPSSortOrderSet, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EmptyFolder(ULONG_PTR, LPMAPIPROGRESS, ULONG) override { return E_NOTIMPL; }
};

class StubABContainer : public StubContainer<IABContainer> {
public:
    HRESULT STDMETHODCALLTYPE CreateEntry(ULONG, LPENTRYID, ULONG, LPMAPIPROP*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray, ULONG, LPADRLIST, LPFlagList) override { return E_NOTIMPL; }
};

class StubAddrBook : public StubMapiProp<IAddrBook> {
public:
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG*, LPUNKNOWN*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG, ULONG*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateOneOff(LPTSTR, LPTSTR, LPTSTR, ULONG, ULONG*, LPENTRYID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR, ULONG, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG*,
                                       LPENTRYID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ResolveName(ULONG_PTR, ULONG, LPTSTR, LPADRLIST) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Address(ULONG_PTR*, LPADRPARM, LPADRLIST*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Details(ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG, LPENTRYID, LPFNBUTTON, LPVOID, LPTSTR,
                                      ULONG) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE RecipOptions(ULONG_PTR, ULONG, LPADRENTRY) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE QueryDefaultRecipOpt(LPTSTR, ULONG, ULONG*, LPSPropValue*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPAB(ULONG*, LPENTRYID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPAB(ULONG, LPENTRYID) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDefaultDir(ULONG*, LPENTRYID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDefaultDir(ULONG, LPENTRYID) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSearchPath(ULONG, LPSRowSet*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetSearchPath(ULONG, LPSRowSet) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray, LPADRLIST) override { return E_NOTIMPL; }
};

class StubProfAdmin : public StubUnknown<IProfAdmin> {
public:
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetProfileTable(ULONG, LPMAPITABLE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateProfile(LPTSTR, LPTSTR, ULONG_PTR, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteProfile(LPTSTR, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ChangeProfilePassword(LPTSTR, LPTSTR, LPTSTR, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyProfile(LPTSTR, LPTSTR, LPTSTR, ULONG_PTR, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RenameProfile(LPTSTR, LPTSTR, LPTSTR, ULONG_PTR, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDefaultProfile(LPTSTR, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AdminServices(LPTSTR, LPTSTR, ULONG_PTR, ULONG, LPSERVICEADMIN*) override {
        return E_NOTIMPL;
    }
};

class StubMsgServiceAdmin : public StubUnknown<IMsgServiceAdmin> {
public:
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMsgServiceTable(ULONG, LPMAPITABLE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateMsgService(LPTSTR, LPTSTR, ULONG_PTR, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteMsgService(LPMAPIUID) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyMsgService(LPMAPIUID, LPTSTR, LPCIID, LPCIID, LPVOID, ULONG_PTR, ULONG) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE RenameMsgService(LPMAPIUID, ULONG, LPTSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ConfigureMsgService(LPMAPIUID, ULONG_PTR, ULONG, ULONG, LPSPropValue) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID, LPCIID, ULONG, LPPROFSECT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MsgServiceTransportOrder(ULONG, LPMAPIUID, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AdminProviders(LPMAPIUID, ULONG, LPPROVIDERADMIN*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPrimaryIdentity(LPMAPIUID, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetProviderTable(ULONG, LPMAPITABLE*) override { return E_NOTIMPL; }
};

class StubProviderAdmin : public StubUnknown<IProviderAdmin> {
public:
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetProviderTable(ULONG, LPMAPITABLE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateProvider(LPTSTR, ULONG, LPSPropValue, ULONG_PTR, ULONG, MAPIUID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE DeleteProvider(LPMAPIUID) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID, LPCIID, ULONG, LPPROFSECT*) override { return E_NOTIMPL; }
};

}  // namespace vx_testing
