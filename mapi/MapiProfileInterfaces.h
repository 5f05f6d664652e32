// The interfaces of MAPI around the data: profiles and their services, status rows, progress, and the objects that
// utilities build tables and property sets with. The rules at the head of MapiInterfaces.h hold here too.
#pragma once

#include "mapi/MapiInterfaces.h"

struct IProviderAdmin;
using LPPROVIDERADMIN = IProviderAdmin*;

// ---- Profiles -------------------------------------------------------------------------------------------------------

// A section of a profile: properties only.
struct IProfSect : IMAPIProp {};

struct IProfAdmin : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProfileTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateProfile(LPTSTR lpszProfileName, LPTSTR lpszPassword, ULONG_PTR ulUIParam,
                                                    ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteProfile(LPTSTR lpszProfileName, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeProfilePassword(LPTSTR lpszProfileName, LPTSTR lpszOldPassword,
                                                            LPTSTR lpszNewPassword, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyProfile(LPTSTR lpszOldProfileName, LPTSTR lpszOldPassword,
                                                  LPTSTR lpszNewProfileName, ULONG_PTR ulUIParam, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE RenameProfile(LPTSTR lpszOldProfileName, LPTSTR lpszOldPassword,
                                                    LPTSTR lpszNewProfileName, ULONG_PTR ulUIParam, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDefaultProfile(LPTSTR lpszProfileName, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE AdminServices(LPTSTR lpszProfileName, LPTSTR lpszPassword, ULONG_PTR ulUIParam,
                                                    ULONG ulFlags, LPSERVICEADMIN* lppServiceAdmin) = 0;
};
using LPPROFADMIN = IProfAdmin*;

struct IMsgServiceAdmin : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMsgServiceTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;

    // Does not tell the new service's identifier: compare the service table before and after.
    virtual HRESULT STDMETHODCALLTYPE CreateMsgService(LPTSTR lpszService, LPTSTR lpszDisplayName, ULONG_PTR ulUIParam,
                                                       ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteMsgService(LPMAPIUID lpUID) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyMsgService(LPMAPIUID lpUID, LPTSTR lpszDisplayName, LPCIID lpInterfaceToCopy,
                                                     LPCIID lpInterfaceDst, LPVOID lpObjectDst, ULONG_PTR ulUIParam,
                                                     ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE RenameMsgService(LPMAPIUID lpUID, ULONG ulFlags, LPTSTR lpszDisplayName) = 0;
    virtual HRESULT STDMETHODCALLTYPE ConfigureMsgService(LPMAPIUID lpUID, ULONG_PTR ulUIParam, ULONG ulFlags,
                                                          ULONG cValues, LPSPropValue lpProps) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID lpUID, LPCIID lpInterface, ULONG ulFlags,
                                                         LPPROFSECT* lppProfSect) = 0;
    virtual HRESULT STDMETHODCALLTYPE MsgServiceTransportOrder(ULONG cUID, LPMAPIUID lpUIDList, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE AdminProviders(LPMAPIUID lpUID, ULONG ulFlags,
                                                     LPPROVIDERADMIN* lppProviderAdmin) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPrimaryIdentity(LPMAPIUID lpUID, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProviderTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;
};

struct IProviderAdmin : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProviderTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;

    // Writes the new provider's identifier to lpUID.
    virtual HRESULT STDMETHODCALLTYPE CreateProvider(LPTSTR lpszProvider, ULONG cValues, LPSPropValue lpProps,
                                                     ULONG_PTR ulUIParam, ULONG ulFlags, MAPIUID* lpUID) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteProvider(LPMAPIUID lpUID) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID lpUID, LPCIID lpInterface, ULONG ulFlags,
                                                         LPPROFSECT* lppProfSect) = 0;
};

// ---- Status and progress --------------------------------------------------------------------------------------------

struct IMAPIStatus : IMAPIProp {
    virtual HRESULT STDMETHODCALLTYPE ValidateState(ULONG_PTR ulUIParam, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SettingsDialog(ULONG_PTR ulUIParam, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangePassword(LPTSTR lpOldPass, LPTSTR lpNewPass, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE FlushQueues(ULONG_PTR ulUIParam, ULONG cbTargetTransport,
                                                  LPENTRYID lpTargetTransport, ULONG ulFlags) = 0;
};
using LPMAPISTATUS = IMAPIStatus*;

struct IMAPIProgress : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Progress(ULONG ulValue, ULONG ulCount, ULONG ulTotal) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFlags(ULONG* lpulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMax(ULONG* lpulMax) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMin(ULONG* lpulMin) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetLimits(ULONG* lpulMin, ULONG* lpulMax, ULONG* lpulFlags) = 0;
};

// A button of a dialog that MAPI shows.
struct IMAPIControl : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) = 0;
    virtual HRESULT STDMETHODCALLTYPE Activate(ULONG ulFlags, ULONG_PTR ulUIParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetState(ULONG ulFlags, ULONG* lpulState) = 0;
};
using LPMAPICONTROL = IMAPIControl*;

// ---- Objects that utilities make: a table in memory (CreateTable), properties in memory (CreateIProp) ---------------

struct ITableData;

// Called when the last reference to a view of the table is released.
using CALLERRELEASE = void STDAPICALLTYPE(ULONG ulCallerData, ITableData* lpTblData, LPMAPITABLE lpVue);

struct ITableData : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE HrGetView(LPSSortOrderSet lpSSortOrderSet, CALLERRELEASE* lpfCallerRelease,
                                                ULONG ulCallerData, LPMAPITABLE* lppMAPITable) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrModifyRow(LPSRow lpSRow) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrDeleteRow(LPSPropValue lpSPropValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrQueryRow(LPSPropValue lpsPropValue, LPSRow* lppSRow, ULONG* lpuliRow) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrEnumRow(ULONG ulRowNumber, LPSRow* lppSRow) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrNotify(ULONG ulFlags, ULONG cValues, LPSPropValue lpSPropValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrInsertRow(ULONG uliRow, LPSRow lpSRow) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrModifyRows(ULONG ulFlags, LPSRowSet lpSRowSet) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrDeleteRows(ULONG ulFlags, LPSRowSet lprowsetToDelete, ULONG* cRowsDeleted) = 0;
};
using LPTABLEDATA = ITableData*;

struct IPropData : IMAPIProp {
    virtual HRESULT STDMETHODCALLTYPE HrSetObjAccess(ULONG ulAccess) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrSetPropAccess(LPSPropTagArray lpPropTagArray, ULONG* rgulAccess) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrGetPropAccess(LPSPropTagArray* lppPropTagArray, ULONG** lprgulAccess) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrAddObjProps(LPSPropTagArray lppPropTagArray,
                                                    LPSPropProblemArray* lprgulAccess) = 0;
};
using LPPROPDATA = IPropData*;
