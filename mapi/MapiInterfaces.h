// The interfaces of Extended MAPI that give access to data: properties, tables, containers, stores, messages, session
// and address book. Those of profiles, status and the utility objects are in MapiProfileInterfaces.h.
//
// Methods stand in vtable order as published; a slot's number is its place, counted on from the base. Nothing may be
// added, left out or reordered, and no interface has a virtual destructor or an overload. Rules common to all:
// - Results are HRESULTs: MAPI_E_* failures, S_OK, or a MAPI_W_* warning, which is a success.
// - An interface pointer that comes back carries one reference for the caller. Memory that comes back goes to
//   MAPIFreeBuffer, or to FreeProws and FreePadrlist for row sets and address lists. Out parameters of failed calls
//   hold nothing of use.
// - A null lpInterface asks for the standard interface of the object.
// - MAPI_UNICODE in ulFlags says that the texts of the call are wide; see MapiTypes.h.
// - Window handles and connection numbers are ULONG_PTR, 8 bytes. Connection numbers of this system stay below 2^32, so
//   that a caller that keeps only 4 bytes of one loses nothing.
// - An object made on a thread may be used from any thread after MAPIInitialize there, one call at a time.
#pragma once

#include "mapi/MapiNotifications.h"
#include "mapi/MapiRestrictions.h"
#include "mapi/MapiTypes.h"
#include "platform/ResultCodes.h"
#include "platform/Unknown.h"

struct IMAPIProgress;
struct IMAPITable;
struct IMsgServiceAdmin;
struct IProfSect;
using LPMAPIPROGRESS = IMAPIProgress*;
using LPMAPITABLE = IMAPITable*;
using LPSERVICEADMIN = IMsgServiceAdmin*;
using LPPROFSECT = IProfSect*;

// ---- Properties and tables ------------------------------------------------------------------------------------------

// An object with properties: the base of nearly everything else.
struct IMAPIProp : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveChanges(ULONG ulFlags) = 0;

    // Null lpPropTagArray: all properties. One value comes back for each tag asked, in its order; what is missing has
    // type PT_ERROR, and the call gives MAPI_W_ERRORS_RETURNED.
    virtual HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray lpPropTagArray, ULONG ulFlags, ULONG* lpcValues,
                                               LPSPropValue* lppPropArray) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPropList(ULONG ulFlags, LPSPropTagArray* lppPropTagArray) = 0;

    // A property too large for GetProps as IStream, an object property as the interface named.
    virtual HRESULT STDMETHODCALLTYPE OpenProperty(ULONG ulPropTag, LPCIID lpiid, ULONG ulInterfaceOptions,
                                                   ULONG ulFlags, LPUNKNOWN* lppUnk) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetProps(ULONG cValues, LPSPropValue lpPropArray,
                                               LPSPropProblemArray* lppProblems) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray lpPropTagArray, LPSPropProblemArray* lppProblems) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyTo(ULONG ciidExclude, LPCIID rgiidExclude, LPSPropTagArray lpExcludeProps,
                                             ULONG_PTR ulUIParam, LPMAPIPROGRESS lpProgress, LPCIID lpInterface,
                                             LPVOID lpDestObj, ULONG ulFlags, LPSPropProblemArray* lppProblems) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray lpIncludeProps, ULONG_PTR ulUIParam,
                                                LPMAPIPROGRESS lpProgress, LPCIID lpInterface, LPVOID lpDestObj,
                                                ULONG ulFlags, LPSPropProblemArray* lppProblems) = 0;

    // Names and ids of named properties, 0x8000 and above. An unknown one is a null pointer, or a tag of type PT_ERROR,
    // and the call gives MAPI_W_ERRORS_RETURNED.
    virtual HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray* lppPropTags, LPGUID lpPropSetGuid, ULONG ulFlags,
                                                      ULONG* lpcPropNames, LPMAPINAMEID** lpppPropNames) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG cPropNames, LPMAPINAMEID* lppPropNames, ULONG ulFlags,
                                                      LPSPropTagArray* lppPropTags) = 0;
};
using LPMAPIPROP = IMAPIProp*;

struct IMAPIAdviseSink : IUnknown {
    // The return value is ignored. Called on a thread of the subsystem's own choice.
    virtual ULONG STDMETHODCALLTYPE OnNotify(ULONG cNotif, LPNOTIFICATION lpNotifications) = 0;
};
using LPMAPIADVISESINK = IMAPIAdviseSink*;

// Rows of columns with a cursor: what lists folders, messages, recipients and all else.
struct IMAPITable : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) = 0;
    virtual HRESULT STDMETHODCALLTYPE Advise(ULONG ulEventMask, LPMAPIADVISESINK lpAdviseSink,
                                             ULONG_PTR* lpulConnection) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR ulConnection) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStatus(ULONG* lpulTableStatus, ULONG* lpulTableType) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray lpPropTagArray, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryColumns(ULONG ulFlags, LPSPropTagArray* lpPropTagArray) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRowCount(ULONG ulFlags, ULONG* lpulCount) = 0;
    virtual HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK bkOrigin, LONG lRowCount, LONG* lplRowsSought) = 0;
    virtual HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG ulNumerator, ULONG ulDenominator) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* lpulRow, ULONG* lpulNumerator, ULONG* lpulDenominator) = 0;

    // MAPI_E_NOT_FOUND leaves the cursor where it was.
    virtual HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction lpRestriction, BOOKMARK bkOrigin, ULONG ulFlags) = 0;

    // Restricting and sorting put the cursor to the beginning and end the life of all bookmarks.
    virtual HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction lpRestriction, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK* lpbkPosition) = 0;
    virtual HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK bkPosition) = 0;
    virtual HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet lpSortCriteria, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE QuerySortOrder(LPSSortOrderSet* lppSortCriteria) = 0;

    // A negative count reads backward. At the end of the table: S_OK and no rows.
    virtual HRESULT STDMETHODCALLTYPE QueryRows(LONG lRowCount, ULONG ulFlags, LPSRowSet* lppRows) = 0;
    virtual HRESULT STDMETHODCALLTYPE Abort() = 0;
    virtual HRESULT STDMETHODCALLTYPE ExpandRow(ULONG cbInstanceKey, LPBYTE pbInstanceKey, ULONG ulRowCount,
                                                ULONG ulFlags, LPSRowSet* lppRows, ULONG* lpulMoreRows) = 0;
    virtual HRESULT STDMETHODCALLTYPE CollapseRow(ULONG cbInstanceKey, LPBYTE pbInstanceKey, ULONG ulFlags,
                                                  ULONG* lpulRowCount) = 0;
    virtual HRESULT STDMETHODCALLTYPE WaitForCompletion(ULONG ulFlags, ULONG ulTimeout, ULONG* lpulTableStatus) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCollapseState(ULONG ulFlags, ULONG cbInstanceKey, LPBYTE lpbInstanceKey,
                                                       ULONG* lpcbCollapseState, LPBYTE* lppbCollapseState) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetCollapseState(ULONG ulFlags, ULONG cbCollapseState, LPBYTE pbCollapseState,
                                                       BOOKMARK* lpbkLocation) = 0;
};

// ---- Messages -------------------------------------------------------------------------------------------------------

// An attachment: properties only.
struct IAttach : IMAPIProp {};
using LPATTACH = IAttach*;

struct IMessage : IMAPIProp {
    virtual HRESULT STDMETHODCALLTYPE GetAttachmentTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;

    // ulAttachmentNum is the PR_ATTACH_NUM of a row of the attachment table.
    virtual HRESULT STDMETHODCALLTYPE OpenAttach(ULONG ulAttachmentNum, LPCIID lpInterface, ULONG ulFlags,
                                                 LPATTACH* lppAttach) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateAttach(LPCIID lpInterface, ULONG ulFlags, ULONG* lpulAttachmentNum,
                                                   LPATTACH* lppAttach) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteAttach(ULONG ulAttachmentNum, ULONG_PTR ulUIParam,
                                                   LPMAPIPROGRESS lpProgress, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRecipientTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;
    virtual HRESULT STDMETHODCALLTYPE ModifyRecipients(ULONG ulFlags, LPADRLIST lpMods) = 0;
    virtual HRESULT STDMETHODCALLTYPE SubmitMessage(ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetReadFlag(ULONG ulFlags) = 0;
};
using LPMESSAGE = IMessage*;

// ---- Containers and stores ------------------------------------------------------------------------------------------

struct IMAPIContainer : IMAPIProp {
    virtual HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenEntry(ULONG cbEntryID, LPENTRYID lpEntryID, LPCIID lpInterface, ULONG ulFlags,
                                                ULONG* lpulObjType, LPUNKNOWN* lppUnk) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction lpRestriction, LPENTRYLIST lpContainerList,
                                                        ULONG ulSearchFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG ulFlags, LPSRestriction* lppRestriction,
                                                        LPENTRYLIST* lppContainerList, ULONG* lpulSearchState) = 0;
};
using LPMAPICONTAINER = IMAPIContainer*;

struct IMAPIFolder : IMAPIContainer {
    virtual HRESULT STDMETHODCALLTYPE CreateMessage(LPCIID lpInterface, ULONG ulFlags, LPMESSAGE* lppMessage) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyMessages(LPENTRYLIST lpMsgList, LPCIID lpInterface, LPVOID lpDestFolder,
                                                   ULONG_PTR ulUIParam, LPMAPIPROGRESS lpProgress, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteMessages(LPENTRYLIST lpMsgList, ULONG_PTR ulUIParam,
                                                     LPMAPIPROGRESS lpProgress, ULONG ulFlags) = 0;

    // Wide texts of CreateFolder and CopyFolder are announced by MAPI_UNICODE, as everywhere.
    virtual HRESULT STDMETHODCALLTYPE CreateFolder(ULONG ulFolderType, LPTSTR lpszFolderName, LPTSTR lpszFolderComment,
                                                   LPCIID lpInterface, ULONG ulFlags, IMAPIFolder** lppFolder) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyFolder(ULONG cbEntryID, LPENTRYID lpEntryID, LPCIID lpInterface,
                                                 LPVOID lpDestFolder, LPTSTR lpszNewFolderName, ULONG_PTR ulUIParam,
                                                 LPMAPIPROGRESS lpProgress, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteFolder(ULONG cbEntryID, LPENTRYID lpEntryID, ULONG_PTR ulUIParam,
                                                   LPMAPIPROGRESS lpProgress, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetReadFlags(LPENTRYLIST lpMsgList, ULONG_PTR ulUIParam,
                                                   LPMAPIPROGRESS lpProgress, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMessageStatus(ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulFlags,
                                                       ULONG* lpulMessageStatus) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMessageStatus(ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulNewStatus,
                                                       ULONG ulNewStatusMask, ULONG* lpulOldStatus) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveContentsSort(LPSSortOrderSet lpSortCriteria, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE EmptyFolder(ULONG_PTR ulUIParam, LPMAPIPROGRESS lpProgress, ULONG ulFlags) = 0;
};
using LPMAPIFOLDER = IMAPIFolder*;

struct IMsgStore : IMAPIProp {
    virtual HRESULT STDMETHODCALLTYPE Advise(ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulEventMask,
                                             LPMAPIADVISESINK lpAdviseSink, ULONG_PTR* lpulConnection) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR ulConnection) = 0;
    virtual HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG cbEntryID1, LPENTRYID lpEntryID1, ULONG cbEntryID2,
                                                      LPENTRYID lpEntryID2, ULONG ulFlags, ULONG* lpulResult) = 0;

    // A null entry id opens the root folder.
    virtual HRESULT STDMETHODCALLTYPE OpenEntry(ULONG cbEntryID, LPENTRYID lpEntryID, LPCIID lpInterface, ULONG ulFlags,
                                                ULONG* lpulObjType, LPUNKNOWN* lppUnk) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetReceiveFolder(LPTSTR lpszMessageClass, ULONG ulFlags, ULONG cbEntryID,
                                                       LPENTRYID lpEntryID) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetReceiveFolder(LPTSTR lpszMessageClass, ULONG ulFlags, ULONG* lpcbEntryID,
                                                       LPENTRYID* lppEntryID, LPTSTR* lppszExplicitClass) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetReceiveFolderTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;
    virtual HRESULT STDMETHODCALLTYPE StoreLogoff(ULONG* lpulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE AbortSubmit(ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetOutgoingQueue(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetLockState(LPMESSAGE lpMessage, ULONG ulLockState) = 0;
    virtual HRESULT STDMETHODCALLTYPE FinishedMsg(ULONG ulFlags, ULONG cbEntryID, LPENTRYID lpEntryID) = 0;
    virtual HRESULT STDMETHODCALLTYPE NotifyNewMail(LPNOTIFICATION lpNotification) = 0;
};
using LPMDB = IMsgStore*;

// A store that stands in for another one. Only UnwrapNoRef is published.
struct IProxyStoreObject : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE PlaceHolder1() = 0;

    // The store behind the proxy, without a reference for the caller.
    virtual HRESULT STDMETHODCALLTYPE UnwrapNoRef(LPVOID* ppvObject) = 0;
    virtual HRESULT STDMETHODCALLTYPE PlaceHolder2() = 0;
};
using LPPROXYSTOREOBJECT = IProxyStoreObject*;

// ---- Address book ---------------------------------------------------------------------------------------------------

// A person: properties only.
struct IMailUser : IMAPIProp {};
using LPMAILUSER = IMailUser*;

struct IABContainer : IMAPIContainer {
    virtual HRESULT STDMETHODCALLTYPE CreateEntry(ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulCreateFlags,
                                                  LPMAPIPROP* lppMAPIPropEntry) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST lpEntries, ULONG_PTR ulUIParam, LPMAPIPROGRESS lpProgress,
                                                  ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST lpEntries, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray lpPropTagArray, ULONG ulFlags, LPADRLIST lpAdrList,
                                                   LPFlagList lpFlagList) = 0;
};
using LPABCONT = IABContainer*;

// A distribution list: the methods of IABContainer under an identifier of its own.
struct IDistList : IMAPIContainer {
    virtual HRESULT STDMETHODCALLTYPE CreateEntry(ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulCreateFlags,
                                                  LPMAPIPROP* lppMAPIPropEntry) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST lpEntries, ULONG_PTR ulUIParam, LPMAPIPROGRESS lpProgress,
                                                  ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST lpEntries, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray lpPropTagArray, ULONG ulFlags, LPADRLIST lpAdrList,
                                                   LPFlagList lpFlagList) = 0;
};
using LPDISTLIST = IDistList*;

struct IAddrBook : IMAPIProp {
    virtual HRESULT STDMETHODCALLTYPE OpenEntry(ULONG cbEntryID, LPENTRYID lpEntryID, LPCIID lpInterface, ULONG ulFlags,
                                                ULONG* lpulObjType, LPUNKNOWN* lppUnk) = 0;
    virtual HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG cbEntryID1, LPENTRYID lpEntryID1, ULONG cbEntryID2,
                                                      LPENTRYID lpEntryID2, ULONG ulFlags, ULONG* lpulResult) = 0;
    virtual HRESULT STDMETHODCALLTYPE Advise(ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulEventMask,
                                             LPMAPIADVISESINK lpAdviseSink, ULONG_PTR* lpulConnection) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR ulConnection) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateOneOff(LPTSTR lpszName, LPTSTR lpszAdrType, LPTSTR lpszAddress,
                                                   ULONG ulFlags, ULONG* lpcbEntryID, LPENTRYID* lppEntryID) = 0;
    virtual HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR ulUIParam, ULONG ulFlags, ULONG cbEIDContainer,
                                               LPENTRYID lpEIDContainer, ULONG cbEIDNewEntryTpl,
                                               LPENTRYID lpEIDNewEntryTpl, ULONG* lpcbEIDNewEntry,
                                               LPENTRYID* lppEIDNewEntry) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResolveName(ULONG_PTR ulUIParam, ULONG ulFlags, LPTSTR lpszNewEntryTitle,
                                                  LPADRLIST lpAdrList) = 0;
    virtual HRESULT STDMETHODCALLTYPE Address(ULONG_PTR* lpulUIParam, LPADRPARM lpAdrParms, LPADRLIST* lppAdrList) = 0;
    virtual HRESULT STDMETHODCALLTYPE Details(ULONG_PTR* lpulUIParam, LPFNDISMISS lpfnDismiss, LPVOID lpvDismissContext,
                                              ULONG cbEntryID, LPENTRYID lpEntryID, LPFNBUTTON lpfButtonCallback,
                                              LPVOID lpvButtonContext, LPTSTR lpszButtonText, ULONG ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE RecipOptions(ULONG_PTR ulUIParam, ULONG ulFlags, LPADRENTRY lpRecip) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryDefaultRecipOpt(LPTSTR lpszAdrType, ULONG ulFlags, ULONG* lpcValues,
                                                           LPSPropValue* lppOptions) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPAB(ULONG* lpcbEntryID, LPENTRYID* lppEntryID) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPAB(ULONG cbEntryID, LPENTRYID lpEntryID) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDefaultDir(ULONG* lpcbEntryID, LPENTRYID* lppEntryID) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDefaultDir(ULONG cbEntryID, LPENTRYID lpEntryID) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSearchPath(ULONG ulFlags, LPSRowSet* lppSearchPath) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSearchPath(ULONG ulFlags, LPSRowSet lpSearchPath) = 0;
    virtual HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG ulFlags, LPSPropTagArray lpPropTagArray,
                                                    LPADRLIST lpRecipList) = 0;
};
using LPADRBOOK = IAddrBook*;

// ---- Session --------------------------------------------------------------------------------------------------------

struct IMAPISession : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMsgStoresTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenMsgStore(ULONG_PTR ulUIParam, ULONG cbEntryID, LPENTRYID lpEntryID,
                                                   LPCIID lpInterface, ULONG ulFlags, LPMDB* lppMDB) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenAddressBook(ULONG_PTR ulUIParam, LPCIID lpInterface, ULONG ulFlags,
                                                      LPADRBOOK* lppAdrBook) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID lpUID, LPCIID lpInterface, ULONG ulFlags,
                                                         LPPROFSECT* lppProfSect) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStatusTable(ULONG ulFlags, LPMAPITABLE* lppTable) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenEntry(ULONG cbEntryID, LPENTRYID lpEntryID, LPCIID lpInterface, ULONG ulFlags,
                                                ULONG* lpulObjType, LPUNKNOWN* lppUnk) = 0;
    virtual HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG cbEntryID1, LPENTRYID lpEntryID1, ULONG cbEntryID2,
                                                      LPENTRYID lpEntryID2, ULONG ulFlags, ULONG* lpulResult) = 0;
    virtual HRESULT STDMETHODCALLTYPE Advise(ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulEventMask,
                                             LPMAPIADVISESINK lpAdviseSink, ULONG_PTR* lpulConnection) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR ulConnection) = 0;
    virtual HRESULT STDMETHODCALLTYPE MessageOptions(ULONG_PTR ulUIParam, ULONG ulFlags, LPTSTR lpszAdrType,
                                                     LPMESSAGE lpMessage) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryDefaultMessageOpt(LPTSTR lpszAdrType, ULONG ulFlags, ULONG* lpcValues,
                                                             LPSPropValue* lppOptions) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumAdrTypes(ULONG ulFlags, ULONG* lpcAdrTypes, LPTSTR** lpppszAdrTypes) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryIdentity(ULONG* lpcbEntryID, LPENTRYID* lppEntryID) = 0;
    virtual HRESULT STDMETHODCALLTYPE Logoff(ULONG_PTR ulUIParam, ULONG ulFlags, ULONG ulReserved) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDefaultStore(ULONG ulFlags, ULONG cbEntryID, LPENTRYID lpEntryID) = 0;
    virtual HRESULT STDMETHODCALLTYPE AdminServices(ULONG ulFlags, LPSERVICEADMIN* lppServiceAdmin) = 0;
    virtual HRESULT STDMETHODCALLTYPE ShowForm(ULONG_PTR ulUIParam, LPMDB lpMsgStore, LPMAPIFOLDER lpParentFolder,
                                               LPCIID lpInterface, ULONG ulMessageToken, LPMESSAGE lpMessageSent,
                                               ULONG ulFlags, ULONG ulMessageStatus, ULONG ulMessageFlags,
                                               ULONG ulAccess, LPSTR lpszMessageClass) = 0;
    virtual HRESULT STDMETHODCALLTYPE PrepareForm(LPCIID lpInterface, LPMESSAGE lpMessage, ULONG* lpulMessageToken) = 0;
};
using LPMAPISESSION = IMAPISession*;
