// MAPI without linking to it: functions of MAPI's own names that find and load a MAPI library at their first call, and
// forward to what it exports. The client's own library is asked first, the system folder's mapi32.dll fills the gaps,
// function by function. Without any MAPI each call gives a fixed result; nothing remembers that, so each call of a
// function that is missing searches once more.
//
// Any thread may call any of these. Threads that meet in the search both load, which costs a load count and no more;
// what was loaded stays until UnloadMAPI, which must have no other call beside it.
#pragma once

#include "mapi/MapiFunctions.h"

// ---- The functions of MAPI; signatures and meanings in mapi/MapiFunctions.h -----------------------------------------

// E_FAIL without MAPI; out parameters are then untouched.
MAPIINITIALIZE MAPIInitialize;
MAPILOGONEX MAPILogonEx;
MAPIADMINPROFILES MAPIAdminProfiles;
ALLOCATEBUFFER MAPIAllocateBuffer;
ALLOCATEMORE MAPIAllocateMore;
HRGETONEPROP HrGetOneProp;
HRSETONEPROP HrSetOneProp;
HRQUERYALLROWS HrQueryAllRows;
SCDUPPROPSET ScDupPropset;
SCCOUNTPROPS ScCountProps;
SCCOPYPROPS ScCopyProps;
OPENIMSGSESSION OpenIMsgSession;
OPENIMSGONISTG OpenIMsgOnIStg;
OPENTNEFSTREAMEX OpenTnefStreamEx;
RTFSYNC RTFSync;
WRAPCOMPRESSEDRTFSTREAM WrapCompressedRTFStream;
HRVALIDATEIPMSUBTREE HrValidateIPMSubtree;
HRDISPATCHNOTIFICATIONS HrDispatchNotifications;
MAPIOPENFORMMGR MAPIOpenFormMgr;
MAPIOPENLOCALFORMCONTAINER MAPIOpenLocalFormContainer;

// E_FAIL without MAPI, with one exception: values of PT_RESTRICTION and PT_ACTIONS are not MAPI's. They are copied
// here, with what they point at, by MapiCopy.h's functions; lpfAllocMore is not used for them.
PROPCOPYMORE PropCopyMore;

// 0 without MAPI. A null block is 0 at once, and loads nothing.
FREEBUFFER MAPIFreeBuffer;

// Null without MAPI.
PPROPFINDPROP PpropFindProp;
MAPIGETDEFAULTMALLOC MAPIGetDefaultMalloc;

// Do nothing without MAPI.
MAPIUNINITIALIZE MAPIUninitialize;
FREEPROWS FreeProws;
FREEPADRLIST FreePadrlist;
CLOSEIMSGSESSION CloseIMsgSession;

// ---- Loading --------------------------------------------------------------------------------------------------------

// Finds and loads what is not loaded yet: the library of the client "Microsoft Outlook", then the system folder's
// mapi32.dll, and takes from each the functions that are still missing.
void AutoLoadMAPI() noexcept;

// Forgets all functions and takes back the loads of the libraries. The next call of any function searches anew.
void UnloadMAPI() noexcept;

// Takes from `module` the functions that are still missing, under the decorated name of old 32-bit libraries first
// where there is one. Null does nothing.
void LoadMAPIFuncs(HMODULE module) noexcept;
