// Flags and enumerations of Extended MAPI, by what they belong to. Those of restrictions and sort orders are in
// MapiRestrictions.h, those of notifications in MapiNotifications.h, result codes in MapiCodes.h, property types in
// MapiTypes.h.
//
// Values of properties have the signedness in which the property is read; flags are ULONG.
#pragma once

#include "mapi/MapiTypes.h"

// ---- PR_ACCESS: what the caller may do with an object ---------------------------------------------------------------

inline constexpr ULONG MAPI_ACCESS_MODIFY = 1;
inline constexpr ULONG MAPI_ACCESS_READ = 2;
inline constexpr ULONG MAPI_ACCESS_DELETE = 4;
inline constexpr ULONG MAPI_ACCESS_CREATE_HIERARCHY = 8;
inline constexpr ULONG MAPI_ACCESS_CREATE_CONTENTS = 0x10;
inline constexpr ULONG MAPI_ACCESS_CREATE_ASSOCIATED = 0x20;

// ---- Flags that many methods share ----------------------------------------------------------------------------------

inline constexpr ULONG MAPI_UNICODE = 0x80000000;
inline constexpr ULONG MAPI_MODIFY = 1;
inline constexpr ULONG MAPI_CREATE = 2;
inline constexpr ULONG MAPI_DEFERRED_ERRORS = 8;  // failures may show up at a later call
inline constexpr ULONG MAPI_ASSOCIATED = 0x40;    // the hidden contents: views, forms, settings
inline constexpr ULONG MAPI_BEST_ACCESS = 0x10;
inline constexpr ULONG STREAM_APPEND = 4;
inline constexpr ULONG MAPI_MOVE = 1;
inline constexpr ULONG MAPI_NOREPLACE = 2;
inline constexpr ULONG MAPI_DECLINE_OK = 4;
inline constexpr ULONG MAPI_DIALOG = 8;
inline constexpr ULONG MAPI_USE_DEFAULT = 0x40;
inline constexpr ULONG CONVENIENT_DEPTH = 1;  // hierarchy tables: all levels, with PR_DEPTH
inline constexpr ULONG SHOW_SOFT_DELETES = 2;
inline constexpr ULONG MAPI_NO_STRINGS = 1;
inline constexpr ULONG MAPI_NO_IDS = 2;
inline constexpr ULONG MNID_ID = 0;
inline constexpr ULONG MNID_STRING = 1;
inline constexpr ULONG MAPI_TOP_LEVEL = 1;
inline constexpr ULONG MAPI_ERROR_VERSION = 0;
inline constexpr ULONG MAPI_NO_CACHE = 0x200;
inline constexpr ULONG MAPI_CACHE_ONLY = 0x4000;
inline constexpr ULONG MAPI_FORCE_ACCESS = 0x80000;  // OpenProfileSection: sections of other providers too

// ---- PR_OBJECT_TYPE -------------------------------------------------------------------------------------------------

inline constexpr ULONG MAPI_STORE = 1;
inline constexpr ULONG MAPI_ADDRBOOK = 2;
inline constexpr ULONG MAPI_FOLDER = 3;
inline constexpr ULONG MAPI_ABCONT = 4;
inline constexpr ULONG MAPI_MESSAGE = 5;
inline constexpr ULONG MAPI_MAILUSER = 6;
inline constexpr ULONG MAPI_ATTACH = 7;
inline constexpr ULONG MAPI_DISTLIST = 8;
inline constexpr ULONG MAPI_PROFSECT = 9;
inline constexpr ULONG MAPI_STATUS = 0xA;
inline constexpr ULONG MAPI_SESSION = 0xB;
inline constexpr ULONG MAPI_FORMINFO = 0xC;

// ---- PR_RECIPIENT_TYPE, and bits that resending adds to it ----------------------------------------------------------

inline constexpr ULONG MAPI_ORIG = 0;
inline constexpr ULONG MAPI_TO = 1;
inline constexpr ULONG MAPI_CC = 2;
inline constexpr ULONG MAPI_BCC = 3;
inline constexpr ULONG MAPI_P1 = 0x10000000;
inline constexpr ULONG MAPI_SUBMITTED = 0x80000000;

// ---- abFlags of an entry id: the first byte, then the second --------------------------------------------------------

inline constexpr ULONG MAPI_SHORTTERM = 0x80;
inline constexpr ULONG MAPI_NOTRECIP = 0x40;
inline constexpr ULONG MAPI_THISSESSION = 0x20;
inline constexpr ULONG MAPI_NOW = 0x10;
inline constexpr ULONG MAPI_NOTRESERVED = 8;
inline constexpr ULONG MAPI_COMPOUND = 0x80;
inline constexpr ULONG MAPI_ONE_OFF_UNICODE = 0x8000;
inline constexpr ULONG MAPI_ONE_OFF_NO_RICH_INFO = 1;

// ---- MAPIInitialize, MAPILogonEx and Logoff -------------------------------------------------------------------------

inline constexpr ULONG MAPI_INIT_VERSION = 0;  // MAPIINIT_0::ulVersion
inline constexpr ULONG MAPI_MULTITHREAD_NOTIFICATIONS = 1;
inline constexpr ULONG MAPI_NO_COINIT = 8;  // the caller has initialized COM itself
inline constexpr ULONG MAPI_NT_SERVICE = 0x10000;
inline constexpr ULONG MAPI_LOGON_UI = 1;
inline constexpr ULONG MAPI_NEW_SESSION = 2;
inline constexpr ULONG MAPI_ALLOW_OTHERS = 8;
inline constexpr ULONG MAPI_EXPLICIT_PROFILE = 0x10;
inline constexpr ULONG MAPI_EXTENDED = 0x20;
inline constexpr ULONG MAPI_FORCE_DOWNLOAD = 0x1000;
inline constexpr ULONG MAPI_SERVICE_UI_ALWAYS = 0x2000;
inline constexpr ULONG MAPI_NO_MAIL = 0x8000;
inline constexpr ULONG MAPI_PASSWORD_UI = 0x20000;
inline constexpr ULONG MAPI_TIMEOUT_SHORT = 0x100000;
inline constexpr ULONG MAPI_SIMPLE_DEFAULT = 0x1009;
inline constexpr ULONG MAPI_SIMPLE_EXPLICIT = 0x1012;
inline constexpr ULONG MAPI_DEFAULT_SERVICES = 1;
inline constexpr ULONG MAPI_BG_SESSION = 0x200000;
inline constexpr ULONG MAPI_LOGOFF_SHARED = 1;
inline constexpr ULONG MAPI_LOGOFF_UI = 2;
inline constexpr ULONG cchProfileNameMax = 0x40;  // characters, terminator not counted
inline constexpr ULONG cchProfilePassMax = 0x40;

// ---- OpenMsgStore and OpenAddressBook -------------------------------------------------------------------------------

inline constexpr ULONG MDB_NO_DIALOG = 1;
inline constexpr ULONG MDB_WRITE = 4;
inline constexpr ULONG MDB_TEMPORARY = 0x20;
inline constexpr ULONG MDB_NO_MAIL = 0x80;
inline constexpr ULONG MDB_ONLINE = 0x100;
inline constexpr ULONG MDB_MULTI = 0x400;
inline constexpr ULONG AB_NO_DIALOG = 1;

// ---- SaveChanges ----------------------------------------------------------------------------------------------------

inline constexpr ULONG KEEP_OPEN_READONLY = 1;
inline constexpr ULONG KEEP_OPEN_READWRITE = 2;
inline constexpr ULONG FORCE_SAVE = 4;

// ---- PR_STORE_SUPPORT_MASK ------------------------------------------------------------------------------------------

inline constexpr ULONG STORE_ENTRYID_UNIQUE = 1;
inline constexpr ULONG STORE_READONLY = 2;
inline constexpr ULONG STORE_SEARCH_OK = 4;
inline constexpr ULONG STORE_MODIFY_OK = 8;
inline constexpr ULONG STORE_CREATE_OK = 0x10;
inline constexpr ULONG STORE_ATTACH_OK = 0x20;
inline constexpr ULONG STORE_OLE_OK = 0x40;
inline constexpr ULONG STORE_SUBMIT_OK = 0x80;
inline constexpr ULONG STORE_NOTIFY_OK = 0x100;
inline constexpr ULONG STORE_MV_PROPS_OK = 0x200;
inline constexpr ULONG STORE_CATEGORIZE_OK = 0x400;
inline constexpr ULONG STORE_RTF_OK = 0x800;
inline constexpr ULONG STORE_RESTRICTION_OK = 0x1000;
inline constexpr ULONG STORE_SORT_OK = 0x2000;
inline constexpr ULONG STORE_PUBLIC_FOLDERS = 0x4000;
inline constexpr ULONG STORE_UNCOMPRESSED_RTF = 0x8000;
inline constexpr ULONG STORE_HAS_SEARCHES = 0x1000000;
inline constexpr ULONG STORE_UNICODE_OK = 0x40000;
inline constexpr ULONG STORE_ITEMPROC = 0x200000;
inline constexpr ULONG STORE_PUSHER_OK = 0x800000;
inline constexpr ULONG STORE_LOCALSTORE = 0x80000;
inline constexpr ULONG STORE_HTML_OK = 0x10000;
inline constexpr ULONG STORE_ANSI_OK = 0x20000;
inline constexpr ULONG STORE_RULES_OK = 0x10000000;

// ---- PR_VALID_FOLDER_MASK -------------------------------------------------------------------------------------------

inline constexpr ULONG FOLDER_IPM_SUBTREE_VALID = 1;
inline constexpr ULONG FOLDER_IPM_INBOX_VALID = 2;
inline constexpr ULONG FOLDER_IPM_OUTBOX_VALID = 4;
inline constexpr ULONG FOLDER_IPM_WASTEBASKET_VALID = 8;
inline constexpr ULONG FOLDER_IPM_SENTMAIL_VALID = 0x10;
inline constexpr ULONG FOLDER_VIEWS_VALID = 0x20;
inline constexpr ULONG FOLDER_COMMON_VIEWS_VALID = 0x40;
inline constexpr ULONG FOLDER_FINDER_VALID = 0x80;

// ---- PR_FOLDER_TYPE, and flags of folder operations -----------------------------------------------------------------

inline constexpr ULONG FOLDER_ROOT = 0;
inline constexpr ULONG FOLDER_GENERIC = 1;
inline constexpr ULONG FOLDER_SEARCH = 2;
inline constexpr ULONG OPEN_IF_EXISTS = 1;
inline constexpr ULONG DEL_MESSAGES = 1;
inline constexpr ULONG DEL_FOLDERS = 4;
inline constexpr ULONG DEL_ASSOCIATED = 8;
inline constexpr ULONG FOLDER_DIALOG = 2;
inline constexpr ULONG FOLDER_MOVE = 1;
inline constexpr ULONG COPY_SUBFOLDERS = 0x10;
inline constexpr ULONG MESSAGE_MOVE = 1;
inline constexpr ULONG MESSAGE_DIALOG = 2;
inline constexpr ULONG RECURSIVE_SORT = 2;

// ---- PR_MESSAGE_FLAGS, PR_MSG_STATUS, PR_STATUS, PR_SUBMIT_FLAGS and SetLockState -----------------------------------

inline constexpr ULONG MSGFLAG_READ = 1;
inline constexpr ULONG MSGFLAG_UNMODIFIED = 2;
inline constexpr ULONG MSGFLAG_SUBMIT = 4;
inline constexpr ULONG MSGFLAG_UNSENT = 8;
inline constexpr ULONG MSGFLAG_HASATTACH = 0x10;
inline constexpr ULONG MSGFLAG_FROMME = 0x20;
inline constexpr ULONG MSGFLAG_ASSOCIATED = 0x40;
inline constexpr ULONG MSGFLAG_RESEND = 0x80;
inline constexpr ULONG MSGFLAG_RN_PENDING = 0x100;
inline constexpr ULONG MSGFLAG_NRN_PENDING = 0x200;
inline constexpr ULONG MSGSTATUS_HIGHLIGHTED = 1;
inline constexpr ULONG MSGSTATUS_TAGGED = 2;
inline constexpr ULONG MSGSTATUS_HIDDEN = 4;
inline constexpr ULONG MSGSTATUS_DELMARKED = 8;
inline constexpr ULONG MSGSTATUS_REMOTE_DOWNLOAD = 0x1000;
inline constexpr ULONG MSGSTATUS_REMOTE_DELETE = 0x2000;
inline constexpr ULONG FLDSTATUS_HIGHLIGHTED = 1;
inline constexpr ULONG FLDSTATUS_TAGGED = 2;
inline constexpr ULONG FLDSTATUS_HIDDEN = 4;
inline constexpr ULONG FLDSTATUS_DELMARKED = 8;
inline constexpr ULONG SUBMITFLAG_LOCKED = 1;
inline constexpr ULONG SUBMITFLAG_PREPROCESS = 2;
inline constexpr ULONG MSG_LOCKED = 1;
inline constexpr ULONG MSG_UNLOCKED = 0;

// ---- SubmitMessage, SetReadFlag, ModifyRecipients, DeleteAttach -----------------------------------------------------

inline constexpr ULONG FORCE_SUBMIT = 1;
inline constexpr ULONG SUPPRESS_RECEIPT = 1;
inline constexpr ULONG CLEAR_READ_FLAG = 4;
inline constexpr ULONG CLEAR_RN_PENDING = 0x20;
inline constexpr ULONG CLEAR_NRN_PENDING = 0x40;
inline constexpr ULONG GENERATE_RECEIPT_ONLY = 0x10;
inline constexpr ULONG MODRECIP_ADD = 2;
inline constexpr ULONG MODRECIP_MODIFY = 4;
inline constexpr ULONG MODRECIP_REMOVE = 8;
inline constexpr ULONG ATTACH_DIALOG = 1;

// ---- PR_ATTACH_METHOD and PR_ATTACH_FLAGS ---------------------------------------------------------------------------

inline constexpr ULONG NO_ATTACHMENT = 0;
inline constexpr ULONG ATTACH_BY_VALUE = 1;
inline constexpr ULONG ATTACH_BY_REFERENCE = 2;
inline constexpr ULONG ATTACH_BY_REF_RESOLVE = 3;
inline constexpr ULONG ATTACH_BY_REF_ONLY = 4;
inline constexpr ULONG ATTACH_EMBEDDED_MSG = 5;
inline constexpr ULONG ATTACH_OLE = 6;
inline constexpr ULONG ATTACH_BY_WEB_REFERENCE = 7;  // the data lies behind a URL

inline constexpr ULONG ATT_INVISIBLE_IN_HTML = 1;
inline constexpr ULONG ATT_INVISIBLE_IN_RTF = 2;
inline constexpr ULONG ATT_MHTML_REF = 4;

// ---- PR_PRIORITY, PR_IMPORTANCE, PR_SENSITIVITY, PR_SECURITY --------------------------------------------------------

inline constexpr LONG PRIO_URGENT = 1;
inline constexpr LONG PRIO_NORMAL = 0;
inline constexpr LONG PRIO_NONURGENT = -1;
inline constexpr LONG IMPORTANCE_LOW = 0;
inline constexpr LONG IMPORTANCE_NORMAL = 1;
inline constexpr LONG IMPORTANCE_HIGH = 2;
inline constexpr ULONG SENSITIVITY_NONE = 0;
inline constexpr ULONG SENSITIVITY_PERSONAL = 1;
inline constexpr ULONG SENSITIVITY_PRIVATE = 2;
inline constexpr ULONG SENSITIVITY_COMPANY_CONFIDENTIAL = 3;
inline constexpr ULONG SECURITY_SIGNED = 1;
inline constexpr ULONG SECURITY_ENCRYPTED = 2;
// PR_FLAG_STATUS: no value is no flag.
inline constexpr ULONG followupComplete = 1;
inline constexpr ULONG followupFlagged = 2;

// PR_MSG_EDITOR_FORMAT: what the message was written as.
inline constexpr ULONG EDITOR_FORMAT_DONTKNOW = 0;
inline constexpr ULONG EDITOR_FORMAT_PLAINTEXT = 1;
inline constexpr ULONG EDITOR_FORMAT_HTML = 2;
inline constexpr ULONG EDITOR_FORMAT_RTF = 3;

// PR_NATIVE_BODY_INFO: which body the others derive from, [MS-OXBBODY].
inline constexpr ULONG NATIVE_BODY_UNDEFINED = 0;
inline constexpr ULONG NATIVE_BODY_PLAIN_TEXT = 1;
inline constexpr ULONG NATIVE_BODY_RTF = 2;
inline constexpr ULONG NATIVE_BODY_HTML = 3;
inline constexpr ULONG NATIVE_BODY_CLEAR_SIGNED = 4;

// ---- IMAPITable: PR_ROW_TYPE, flags of calls, status and kind, bookmarks --------------------------------------------

inline constexpr ULONG TBL_ALL_COLUMNS = 1;
inline constexpr ULONG TBL_LEAF_ROW = 1;
inline constexpr ULONG TBL_EMPTY_CATEGORY = 2;
inline constexpr ULONG TBL_EXPANDED_CATEGORY = 3;
inline constexpr ULONG TBL_COLLAPSED_CATEGORY = 4;
inline constexpr ULONG TBL_NOWAIT = 1;
inline constexpr ULONG TBL_ASYNC = 1;
inline constexpr ULONG TBL_BATCH = 2;      // the work may wait until rows are asked for
inline constexpr ULONG TBL_NOADVANCE = 1;  // QueryRows leaves the cursor where it is
inline constexpr ULONG TBLSTAT_COMPLETE = 0;
inline constexpr ULONG TBLSTAT_QCHANGED = 7;
inline constexpr ULONG TBLSTAT_SORTING = 9;
inline constexpr ULONG TBLSTAT_SORT_ERROR = 0xA;
inline constexpr ULONG TBLSTAT_SETTING_COLS = 0xB;
inline constexpr ULONG TBLSTAT_SETCOL_ERROR = 0xD;
inline constexpr ULONG TBLSTAT_RESTRICTING = 0xE;
inline constexpr ULONG TBLSTAT_RESTRICT_ERROR = 0xF;
inline constexpr ULONG TBLTYPE_SNAPSHOT = 0;
inline constexpr ULONG TBLTYPE_KEYSET = 1;
inline constexpr ULONG TBLTYPE_DYNAMIC = 2;
inline constexpr BOOKMARK BOOKMARK_BEGINNING = 0;
inline constexpr BOOKMARK BOOKMARK_CURRENT = 1;
inline constexpr BOOKMARK BOOKMARK_END = 2;
inline constexpr ULONG DIR_BACKWARD = 1;

// ---- Search folders: state, and SetSearchCriteria -------------------------------------------------------------------

inline constexpr ULONG SEARCH_RUNNING = 1;
inline constexpr ULONG SEARCH_REBUILD = 2;
inline constexpr ULONG SEARCH_RECURSIVE = 4;
inline constexpr ULONG SEARCH_FOREGROUND = 8;
inline constexpr ULONG STOP_SEARCH = 1;
inline constexpr ULONG RESTART_SEARCH = 2;
inline constexpr ULONG RECURSIVE_SEARCH = 4;
inline constexpr ULONG SHALLOW_SEARCH = 8;
inline constexpr ULONG FOREGROUND_SEARCH = 0x10;
inline constexpr ULONG BACKGROUND_SEARCH = 0x20;

// ---- StoreLogoff ----------------------------------------------------------------------------------------------------

inline constexpr ULONG LOGOFF_NO_WAIT = 1;
inline constexpr ULONG LOGOFF_ORDERLY = 2;
inline constexpr ULONG LOGOFF_PURGE = 4;
inline constexpr ULONG LOGOFF_ABORT = 8;
inline constexpr ULONG LOGOFF_QUIET = 0x10;
inline constexpr ULONG LOGOFF_COMPLETE = 0x10000;
inline constexpr ULONG LOGOFF_INBOUND = 0x20000;
inline constexpr ULONG LOGOFF_OUTBOUND = 0x40000;
inline constexpr ULONG LOGOFF_OUTBOUND_QUEUE = 0x80000;
inline constexpr ULONG LOGOFF_NORMAL = 1;
inline constexpr ULONG LOGOFF_HURRY = 0x80000000;

// ---- Status rows: PR_STATUS_CODE, PR_RESOURCE_METHODS, PR_RESOURCE_FLAGS; PR_RESOURCE_TYPE and store kinds ----------

inline constexpr ULONG STATUS_VALIDATE_STATE = 1;
inline constexpr ULONG STATUS_SETTINGS_DIALOG = 2;
inline constexpr ULONG STATUS_CHANGE_PASSWORD = 4;
inline constexpr ULONG STATUS_FLUSH_QUEUES = 8;
inline constexpr ULONG STATUS_DEFAULT_OUTBOUND = 1;
inline constexpr ULONG STATUS_DEFAULT_STORE = 2;
inline constexpr ULONG STATUS_PRIMARY_IDENTITY = 4;
inline constexpr ULONG STATUS_SIMPLE_STORE = 8;
inline constexpr ULONG STATUS_XP_PREFER_LAST = 0x10;
inline constexpr ULONG STATUS_NO_PRIMARY_IDENTITY = 0x20;
inline constexpr ULONG STATUS_NO_DEFAULT_STORE = 0x40;
inline constexpr ULONG STATUS_TEMP_SECTION = 0x80;
inline constexpr ULONG STATUS_OWN_STORE = 0x100;
inline constexpr ULONG STATUS_NEED_IPM_TREE = 0x800;
inline constexpr ULONG STATUS_PRIMARY_STORE = 0x1000;
inline constexpr ULONG STATUS_SECONDARY_STORE = 0x2000;
inline constexpr ULONG STATUS_AVAILABLE = 1;
inline constexpr ULONG STATUS_OFFLINE = 2;
inline constexpr ULONG STATUS_FAILURE = 4;
inline constexpr ULONG STATUS_INBOUND_ENABLED = 0x10000;
inline constexpr ULONG STATUS_INBOUND_ACTIVE = 0x20000;
inline constexpr ULONG STATUS_INBOUND_FLUSH = 0x40000;
inline constexpr ULONG STATUS_OUTBOUND_ENABLED = 0x100000;
inline constexpr ULONG STATUS_OUTBOUND_ACTIVE = 0x200000;
inline constexpr ULONG STATUS_OUTBOUND_FLUSH = 0x400000;
inline constexpr ULONG STATUS_REMOTE_ACCESS = 0x800000;
inline constexpr ULONG MAPI_STORE_PROVIDER = 0x21;
inline constexpr ULONG MAPI_AB = 0x22;
inline constexpr ULONG MAPI_AB_PROVIDER = 0x23;
inline constexpr ULONG MAPI_TRANSPORT_PROVIDER = 0x24;
inline constexpr ULONG MAPI_SPOOLER = 0x25;
inline constexpr ULONG MAPI_PROFILE_PROVIDER = 0x26;
inline constexpr ULONG MAPI_SUBSYSTEM = 0x27;
inline constexpr ULONG MAPI_HOOK_PROVIDER = 0x28;
inline constexpr ULONG MAPI_DEFAULT_STORE = 1;
inline constexpr ULONG MAPI_SIMPLE_STORE_TEMPORARY = 2;
inline constexpr ULONG MAPI_SIMPLE_STORE_PERMANENT = 3;
inline constexpr ULONG MAPI_PRIMARY_STORE = 4;
inline constexpr ULONG MAPI_SECONDARY_STORE = 5;

// ---- Message services: calls and PR_RESOURCE_FLAGS of a service -----------------------------------------------------

inline constexpr ULONG SERVICE_UI_ALWAYS = 2;
inline constexpr ULONG SERVICE_UI_ALLOWED = 0x10;
inline constexpr ULONG SERVICE_DEFAULT_STORE = 1;
inline constexpr ULONG SERVICE_SINGLE_COPY = 2;
inline constexpr ULONG SERVICE_CREATE_WITH_STORE = 4;
inline constexpr ULONG SERVICE_PRIMARY_IDENTITY = 8;
inline constexpr ULONG SERVICE_NO_PRIMARY_IDENTITY = 0x20;
inline constexpr ULONG SERVICE_LOGON_FAILED = 0x20;
inline constexpr ULONG UI_READONLY = 1;
inline constexpr ULONG UI_SERVICE = 2;
inline constexpr ULONG UI_CURRENT_PROVIDER_FIRST = 4;

// ---- Address book: containers, creation, resolving, display types and dialogs ---------------------------------------

inline constexpr ULONG AB_RECIPIENTS = 1;
inline constexpr ULONG AB_SUBCONTAINERS = 2;
inline constexpr ULONG AB_MODIFIABLE = 4;
inline constexpr ULONG AB_UNMODIFIABLE = 8;
inline constexpr ULONG AB_FIND_ON_OPEN = 0x10;
inline constexpr ULONG AB_NOT_DEFAULT = 0x20;
inline constexpr ULONG AB_SELECTONLY = 0x10;
inline constexpr ULONG AB_RESOLVE = 0x20;
inline constexpr ULONG CREATE_CHECK_DUP_STRICT = 1;
inline constexpr ULONG CREATE_CHECK_DUP_LOOSE = 2;
inline constexpr ULONG CREATE_REPLACE = 4;
inline constexpr ULONG MAPI_UNRESOLVED = 0;
inline constexpr ULONG MAPI_AMBIGUOUS = 1;
inline constexpr ULONG MAPI_RESOLVED = 2;
inline constexpr ULONG MAPI_SEND_NO_RICH_INFO = 0x10000;
inline constexpr ULONG DT_MAILUSER = 0;
inline constexpr ULONG DT_DISTLIST = 1;
inline constexpr ULONG DT_FORUM = 2;
inline constexpr ULONG DT_AGENT = 3;
inline constexpr ULONG DT_ORGANIZATION = 4;
inline constexpr ULONG DT_PRIVATE_DISTLIST = 5;
inline constexpr ULONG DT_REMOTE_MAILUSER = 6;
inline constexpr ULONG DT_MODIFIABLE = 0x10000;
inline constexpr ULONG DT_GLOBAL = 0x20000;
inline constexpr ULONG DT_LOCAL = 0x30000;
inline constexpr ULONG DT_WAN = 0x40000;
inline constexpr ULONG DT_NOT_SPECIFIC = 0x50000;
inline constexpr ULONG DT_FOLDER = 0x1000000;
inline constexpr ULONG DT_FOLDER_LINK = 0x2000000;
inline constexpr ULONG DT_FOLDER_SPECIAL = 0x4000000;
inline constexpr ULONG DT_MULTILINE = 1;
inline constexpr ULONG DT_EDITABLE = 2;
inline constexpr ULONG DT_REQUIRED = 4;
inline constexpr ULONG DT_SET_IMMEDIATE = 8;
inline constexpr ULONG DT_PASSWORD_EDIT = 0x10;
inline constexpr ULONG DT_ACCEPT_DBCS = 0x20;
inline constexpr ULONG DT_SET_SELECTION = 0x40;
inline constexpr ULONG DIALOG_MODAL = 1;
inline constexpr ULONG DIALOG_SDI = 2;
inline constexpr ULONG DIALOG_OPTIONS = 4;
inline constexpr ULONG ADDRESS_ONE = 8;

// ---- Objects of the utilities ---------------------------------------------------------------------------------------

inline constexpr ULONG IPROP_READONLY = 1;
inline constexpr ULONG IPROP_READWRITE = 2;
inline constexpr ULONG IPROP_CLEAN = 0x10000;
inline constexpr ULONG IPROP_DIRTY = 0x20000;
inline constexpr ULONG TAD_ALL_ROWS = 1;
inline constexpr ULONG RTF_SYNC_RTF_CHANGED = 1;
inline constexpr ULONG RTF_SYNC_BODY_CHANGED = 2;
// WrapCompressedRTFStreamEx: a flag of RTF_WCSINFO, and what RTF_WCSRETINFO then says of the body.
inline constexpr ULONG MAPI_NATIVE_BODY = 0x00010000;
inline constexpr ULONG MAPI_NATIVE_BODY_TYPE_RTF = 1;
inline constexpr ULONG MAPI_NATIVE_BODY_TYPE_HTML = 2;
inline constexpr ULONG MAPI_NATIVE_BODY_TYPE_PLAINTEXT = 4;
inline constexpr ULONG SOF_UNIQUEFILENAME = 0x80000000;  // OpenStreamOnFile makes up the name
inline constexpr ULONG MAPI_FORCE_CREATE = 1;
inline constexpr ULONG MAPI_FULL_IPM_TREE = 2;
// OpenIMsgOnIStg: SaveChanges leaves committing the storage to the caller.
inline constexpr ULONG IMSG_NO_ISTG_COMMIT = 1;

// GetAttribIMsgOnIStg.
inline constexpr ULONG PROPATTR_MANDATORY = 1;
inline constexpr ULONG PROPATTR_READABLE = 2;
inline constexpr ULONG PROPATTR_WRITEABLE = 4;
inline constexpr ULONG PROPATTR_NOT_PRESENT = 8;

// ---- PR_PROFILE_CONFIG_FLAGS of the global profile section ----------------------------------------------------------

inline constexpr ULONG CONFIG_SERVICE = 0x1;
inline constexpr ULONG CONFIG_SHOW_STARTUP_UI = 0x2;
inline constexpr ULONG CONFIG_SHOW_CONNECT_UI = 0x4;
inline constexpr ULONG CONFIG_PROMPT_FOR_CREDENTIALS = 0x8;
inline constexpr ULONG CONFIG_NO_AUTO_DETECT = 0x10;
inline constexpr ULONG CONFIG_OST_CACHE_ONLY = 0x20;
inline constexpr ULONG CONFIG_OST_CACHE_PRIVATE = 0x180;  // the private mailbox is read from a local copy
inline constexpr ULONG CONFIG_OST_CACHE_PUBLIC = 0x400;   // the public folders too
