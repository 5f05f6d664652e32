// Types of the functions that a MAPI library exports, named as the function in capitals, with LP before it for the
// pointer. The functions themselves are not declared here: one program takes them by name, another defines them.
//
// Memory: MAPIAllocateBuffer makes a root block, MAPIAllocateMore a block that goes with a root; MAPIFreeBuffer of the
// root frees all, and a null pointer may be freed. Each row of a row set and each entry of an address list is a root of
// its own: FreeProws and FreePadrlist free the whole. All of these may be called from any thread.
#pragma once

#include "mapi/MapiProfileInterfaces.h"

struct IMAPIFormContainer;
struct IMAPIFormMgr;
struct IMsgSession;
struct IStorage;
struct IStream;
struct ITnef;
using LPMAPIFORMCONTAINER = IMAPIFormContainer*;
using LPMAPIFORMMGR = IMAPIFormMgr*;
using LPMSGSESS = IMsgSession*;
using LPITNEF = ITnef*;

// ---- Start and end --------------------------------------------------------------------------------------------------

// lpMapiInit: a MAPIINIT_0, or null for none of its flags.
using MAPIINITIALIZE = HRESULT STDAPICALLTYPE(LPVOID lpMapiInit);
using MAPIUNINITIALIZE = void STDAPICALLTYPE();
using MAPILOGONEX = HRESULT STDAPICALLTYPE(ULONG_PTR ulUIParam, LPTSTR lpszProfileName, LPTSTR lpszPassword,
                                           ULONG flFlags, LPMAPISESSION* lppSession);
using MAPIADMINPROFILES = HRESULT STDAPICALLTYPE(ULONG ulFlags, LPPROFADMIN* lppProfAdmin);
using LAUNCHWIZARDENTRY = HRESULT STDAPICALLTYPE(HWND hParentWnd, ULONG ulFlags, LPCSTR* lppszServiceNameToAdd,
                                                 ULONG cbBufferMax, LPSTR lpszNewProfileName);
using SCINITMAPIUTIL = SCODE STDAPICALLTYPE(ULONG ulFlags);
using DEINITMAPIUTIL = void STDAPICALLTYPE();

// ---- Memory ---------------------------------------------------------------------------------------------------------

using ALLOCATEBUFFER = SCODE STDAPICALLTYPE(ULONG cbSize, LPVOID* lppBuffer);
using ALLOCATEMORE = SCODE STDAPICALLTYPE(ULONG cbSize, LPVOID lpObject, LPVOID* lppBuffer);
using FREEBUFFER = ULONG STDAPICALLTYPE(LPVOID lpBuffer);
using LPALLOCATEBUFFER = ALLOCATEBUFFER*;
using LPALLOCATEMORE = ALLOCATEMORE*;
using LPFREEBUFFER = FREEBUFFER*;

using MAPIGETDEFAULTMALLOC = LPMALLOC STDAPICALLTYPE();
using FREEPROWS = void STDAPICALLTYPE(LPSRowSet lpRows);
using FREEPADRLIST = void STDAPICALLTYPE(LPADRLIST lpAdrlist);

// ---- Properties and tables ------------------------------------------------------------------------------------------

// One property as an allocation of its own.
using HRGETONEPROP = HRESULT STDAPICALLTYPE(LPMAPIPROP lpMapiProp, ULONG ulPropTag, LPSPropValue* lppProp);
using HRSETONEPROP = HRESULT STDAPICALLTYPE(LPMAPIPROP lpMapiProp, LPSPropValue lpProp);
using FPROPEXISTS = BOOL STDAPICALLTYPE(LPMAPIPROP lpMapiProp, ULONG ulPropTag);

// All rows from the table's beginning, at most crowsMax of them; 0 is no limit. Columns, restriction and order are set
// where given and stay set. MAPI_E_TABLE_TOO_BIG when there are more.
using HRQUERYALLROWS = HRESULT STDAPICALLTYPE(LPMAPITABLE lpTable, LPSPropTagArray lpPropTags,
                                              LPSRestriction lpRestriction, LPSSortOrderSet lpSortOrderSet,
                                              LONG crowsMax, LPSRowSet* lppRows);
using HRADDCOLUMNS = HRESULT STDAPICALLTYPE(LPMAPITABLE lptbl, LPSPropTagArray lpproptagColumnsNew,
                                            LPALLOCATEBUFFER lpAllocateBuffer, LPFREEBUFFER lpFreeBuffer);

// The first value with the tag, or with the tag's id when its type is PT_UNSPECIFIED; null when there is none. A
// pointer into the array.
using PPROPFINDPROP = LPSPropValue STDAPICALLTYPE(LPSPropValue lpPropArray, ULONG cValues, ULONG ulPropTag);
using LPVALFINDPROP = LPSPropValue STDAPICALLTYPE(ULONG ulPropTag, ULONG cValues, LPSPropValue lpPropArray);

// Property arrays as one block: its size, a copy into a block of that size, its pointers moved with the block, and all
// at once. PropCopyMore copies one value, with blocks that go with lpvObject for what it points at.
using SCCOUNTPROPS = SCODE STDAPICALLTYPE(int cValues, LPSPropValue lpPropArray, ULONG* lpcb);
using SCCOPYPROPS = SCODE STDAPICALLTYPE(int cValues, LPSPropValue lpPropArray, LPVOID lpvDst, ULONG* lpcb);
using SCRELOCPROPS = SCODE STDAPICALLTYPE(int cValues, LPSPropValue lpPropArray, LPVOID lpvBaseOld, LPVOID lpvBaseNew,
                                          ULONG* lpcb);
using SCDUPPROPSET = SCODE STDAPICALLTYPE(int cValues, LPSPropValue lpPropArray, LPALLOCATEBUFFER lpAllocateBuffer,
                                          LPSPropValue* lppPropArray);
using PROPCOPYMORE = SCODE STDAPICALLTYPE(LPSPropValue lpSPropValueDest, LPSPropValue lpSPropValueSrc,
                                          ALLOCATEMORE* lpfAllocMore, LPVOID lpvObject);
using ULPROPSIZE = ULONG STDAPICALLTYPE(LPSPropValue lpSPropValue);

using FEQUALNAMES = BOOL STDAPICALLTYPE(LPMAPINAMEID lpName1, LPMAPINAMEID lpName2);
using FPROPCONTAINSPROP = BOOL STDAPICALLTYPE(LPSPropValue lpSPropValueDst, LPSPropValue lpSPropValueSrc,
                                              ULONG ulFuzzyLevel);
using FPROPCOMPAREPROP = BOOL STDAPICALLTYPE(LPSPropValue lpSPropValue1, ULONG ulRelOp, LPSPropValue lpSPropValue2);
using LPROPCOMPAREPROP = LONG STDAPICALLTYPE(LPSPropValue lpSPropValueA, LPSPropValue lpSPropValueB);

// Objects in memory.
using CREATETABLE = SCODE STDAPICALLTYPE(LPCIID lpInterface, ALLOCATEBUFFER* lpAllocateBuffer,
                                         ALLOCATEMORE* lpAllocateMore, FREEBUFFER* lpFreeBuffer, LPVOID lpvReserved,
                                         ULONG ulTableType, ULONG ulPropTagIndexColumn,
                                         LPSPropTagArray lpSPropTagArrayColumns, LPTABLEDATA* lppTableData);
using CREATEIPROP = SCODE STDAPICALLTYPE(LPCIID lpInterface, ALLOCATEBUFFER* lpAllocateBuffer,
                                         ALLOCATEMORE* lpAllocateMore, FREEBUFFER* lpFreeBuffer, LPVOID lpvReserved,
                                         LPPROPDATA* lppPropData);

// ---- Notifications --------------------------------------------------------------------------------------------------

using NOTIFCALLBACK = LONG STDAPICALLTYPE(LPVOID lpvContext, ULONG cNotification, LPNOTIFICATION lpNotifications);
using LPNOTIFCALLBACK = NOTIFCALLBACK*;

using HRALLOCADVISESINK = HRESULT STDAPICALLTYPE(LPNOTIFCALLBACK lpfnCallback, LPVOID lpvContext,
                                                 LPMAPIADVISESINK* lppAdviseSink);
using HRTHISTHREADADVISESINK = HRESULT STDAPICALLTYPE(LPMAPIADVISESINK lpAdviseSink, LPMAPIADVISESINK* lppAdviseSink);
using HRDISPATCHNOTIFICATIONS = HRESULT STDAPICALLTYPE(ULONG ulFlags);

// ---- Streams and formatted text -------------------------------------------------------------------------------------

using OPENSTREAMONFILE = HRESULT STDAPICALLTYPE(LPALLOCATEBUFFER lpAllocateBuffer, LPFREEBUFFER lpFreeBuffer,
                                                ULONG ulFlags, LPTSTR lpszFileName, LPTSTR lpszPrefix,
                                                IStream** lppStream);
using LPOPENSTREAMONFILE = OPENSTREAMONFILE*;
using RTFSYNC = HRESULT STDAPICALLTYPE(LPMESSAGE lpMessage, ULONG ulFlags, BOOL* lpfMessageUpdated);

// ulFlags: MAPI_MODIFY for writing, STORE_UNCOMPRESSED_RTF for the form that is not compressed.
using WRAPCOMPRESSEDRTFSTREAM = HRESULT STDAPICALLTYPE(IStream* lpCompressedRTFStream, ULONG ulFlags,
                                                       IStream** lpUncompressedRTFStream);
using WRAPCOMPRESSEDRTFSTREAMEX = HRESULT STDAPICALLTYPE(IStream* pCompressedRTFStream, const RTF_WCSINFO* pWCSInfo,
                                                         IStream** ppUncompressedRTFStream, RTF_WCSRETINFO* pRetInfo);
using OPENTNEFSTREAMEX = HRESULT STDAPICALLTYPE(LPVOID lpvSupport, IStream* lpStream, LPTSTR lpszStreamName,
                                                ULONG ulFlags, LPMESSAGE lpMessage, WORD wKeyVal,
                                                LPADRBOOK lpAdressBook, LPITNEF* lppTNEF);
using HRISTORAGEFROMSTREAM = HRESULT STDAPICALLTYPE(LPUNKNOWN lpUnkIn, LPCIID lpInterface, ULONG ulFlags,
                                                    IStorage** lppStorageOut);

// ---- Messages on structured storages --------------------------------------------------------------------------------

// Called when the message is released for the last time.
using MSGCALLRELEASE = void STDAPICALLTYPE(ULONG ulCallerData, LPMESSAGE lpMessage);

using OPENIMSGSESSION = SCODE STDAPICALLTYPE(LPMALLOC lpMalloc, ULONG ulFlags, LPMSGSESS* lppMsgSess);
using CLOSEIMSGSESSION = void STDAPICALLTYPE(LPMSGSESS lpMsgSess);

// lpMsgSess may be null. The message keeps a reference to the storage.
using OPENIMSGONISTG = SCODE STDAPICALLTYPE(LPMSGSESS lpMsgSess, LPALLOCATEBUFFER lpAllocateBuffer,
                                            LPALLOCATEMORE lpAllocateMore, LPFREEBUFFER lpFreeBuffer, LPMALLOC lpMalloc,
                                            LPVOID lpMapiSup, IStorage* lpStg, MSGCALLRELEASE* lpfMsgCallRelease,
                                            ULONG ulCallerData, ULONG ulFlags, LPMESSAGE* lppMsg);
using GETATTRIBIMSGONISTG = HRESULT STDAPICALLTYPE(LPVOID lpObject, LPSPropTagArray lpPropTagArray,
                                                   LPSPropAttrArray* lppPropAttrArray);
using SETATTRIBIMSGONISTG = HRESULT STDAPICALLTYPE(LPVOID lpObject, LPSPropTagArray lpPropTags,
                                                   LPSPropAttrArray lpPropAttrs, LPSPropProblemArray* lppPropProblems);
using MAPSTORAGESCODE = SCODE STDAPICALLTYPE(SCODE StgSCode);

// ---- Forms ----------------------------------------------------------------------------------------------------------

using MAPIOPENFORMMGR = HRESULT STDAPICALLTYPE(LPMAPISESSION pSession, LPMAPIFORMMGR* ppmgr);
using MAPIOPENLOCALFORMCONTAINER = HRESULT STDAPICALLTYPE(LPMAPIFORMCONTAINER* ppfcnt);

// ---- Stores and entry identifiers -----------------------------------------------------------------------------------

using HRVALIDATEIPMSUBTREE = HRESULT STDAPICALLTYPE(LPMDB lpMDB, ULONG ulFlags, ULONG* lpcValues,
                                                    LPSPropValue* lppValues, LPMAPIERROR* lpperr);
using WRAPSTOREENTRYID = HRESULT STDAPICALLTYPE(ULONG ulFlags, LPTSTR lpszDLLName, ULONG cbOrigEntry,
                                                LPENTRYID lpOrigEntry, ULONG* lpcbWrappedEntry,
                                                LPENTRYID* lppWrappedEntry);
using HRENTRYIDFROMSZ = HRESULT STDAPICALLTYPE(LPTSTR sz, ULONG* pcb, LPENTRYID* ppentry);
using HRSZFROMENTRYID = HRESULT STDAPICALLTYPE(ULONG cb, LPENTRYID pentry, LPTSTR* psz);
using HRCOMPOSEEID = HRESULT STDAPICALLTYPE(LPMAPISESSION psession, ULONG cbStoreRecordKey, LPBYTE pbStoreRecordKey,
                                            ULONG cbMsgEID, LPENTRYID pbMsgEID, ULONG* pcbEID, LPENTRYID* ppEID);
using HRDECOMPOSEEID = HRESULT STDAPICALLTYPE(LPMAPISESSION psession, ULONG cbEID, LPENTRYID pEID, ULONG* pcbStoreEID,
                                              LPENTRYID* ppStoreEID, ULONG* pcbMsgEID, LPENTRYID* ppMsgEID);
using SCCREATECONVERSATIONINDEX = SCODE STDAPICALLTYPE(ULONG cbParent, LPBYTE lpbParent, ULONG* lpcbConvIndex,
                                                       LPBYTE* lppbConvIndex);

// ---- Small helpers --------------------------------------------------------------------------------------------------

using FBINFROMHEX = BOOL STDAPICALLTYPE(LPTSTR lpsz, LPBYTE lpb);
using SCBINFROMHEXBOUNDED = SCODE STDAPICALLTYPE(LPTSTR lpsz, LPBYTE lpb, ULONG cb);
using HEXFROMBIN = void STDAPICALLTYPE(LPBYTE lpb, int cb, LPTSTR lpsz);
using ULFROMSZHEX = ULONG STDAPICALLTYPE(LPCTSTR lpsz);
using SZFINDCH = LPTSTR STDAPICALLTYPE(LPCTSTR lpsz, USHORT ch);
using SZFINDLASTCH = LPTSTR STDAPICALLTYPE(LPCTSTR lpsz, USHORT ch);
using SZFINDSZ = LPTSTR STDAPICALLTYPE(LPCTSTR lpsz, LPCTSTR lpszKey);
using UFROMSZ = UINT STDAPICALLTYPE(LPCTSTR lpsz);
using FTADDFT = FILETIME STDAPICALLTYPE(FILETIME Addend1, FILETIME Addend2);
using FTSUBFT = FILETIME STDAPICALLTYPE(FILETIME Minuend, FILETIME Subtrahend);
using FTMULDW = FILETIME STDAPICALLTYPE(DWORD Multiplier, FILETIME Multiplicand);
using FTMULDWDW = FILETIME STDAPICALLTYPE(DWORD Multiplicand, DWORD Multiplier);
using FTNEGFT = FILETIME STDAPICALLTYPE(FILETIME ft);
using ULADDREF = ULONG STDAPICALLTYPE(LPVOID lpunk);
using ULRELEASE = ULONG STDAPICALLTYPE(LPVOID lpunk);
