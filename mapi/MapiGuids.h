// Identifiers of Extended MAPI: interfaces, property sets, and the well-known MAPIUIDs of profile sections and
// providers.
#pragma once

#include "mapi/MapiTypes.h"
#include "platform/Guid.h"

// ---- Interfaces: {xxxxxxxx-0000-0000-C000-000000000046} -------------------------------------------------------------

inline constexpr IID IID_IMAPISession = OleGuid(0x00020300);
inline constexpr IID IID_IMAPITable = OleGuid(0x00020301);
inline constexpr IID IID_IMAPIAdviseSink = OleGuid(0x00020302);
inline constexpr IID IID_IMAPIProp = OleGuid(0x00020303);
inline constexpr IID IID_IProfSect = OleGuid(0x00020304);
inline constexpr IID IID_IMAPIStatus = OleGuid(0x00020305);
inline constexpr IID IID_IMsgStore = OleGuid(0x00020306);
inline constexpr IID IID_IMessage = OleGuid(0x00020307);
inline constexpr IID IID_IAttachment = OleGuid(0x00020308);
inline constexpr IID IID_IAddrBook = OleGuid(0x00020309);
inline constexpr IID IID_IMailUser = OleGuid(0x0002030A);
inline constexpr IID IID_IMAPIContainer = OleGuid(0x0002030B);
inline constexpr IID IID_IMAPIFolder = OleGuid(0x0002030C);
inline constexpr IID IID_IABContainer = OleGuid(0x0002030D);
inline constexpr IID IID_IDistList = OleGuid(0x0002030E);
inline constexpr IID IID_IMAPISup = OleGuid(0x0002030F);
inline constexpr IID IID_IMSProvider = OleGuid(0x00020310);
inline constexpr IID IID_IABProvider = OleGuid(0x00020311);
inline constexpr IID IID_IXPProvider = OleGuid(0x00020312);
inline constexpr IID IID_IMSLogon = OleGuid(0x00020313);
inline constexpr IID IID_IABLogon = OleGuid(0x00020314);
inline constexpr IID IID_IXPLogon = OleGuid(0x00020315);
inline constexpr IID IID_IMAPITableData = OleGuid(0x00020316);
inline constexpr IID IID_IMAPISpoolerInit = OleGuid(0x00020317);
inline constexpr IID IID_IMAPISpoolerSession = OleGuid(0x00020318);
inline constexpr IID IID_ITNEF = OleGuid(0x00020319);
inline constexpr IID IID_IMAPIPropData = OleGuid(0x0002031A);
inline constexpr IID IID_IMAPIControl = OleGuid(0x0002031B);
inline constexpr IID IID_IProfAdmin = OleGuid(0x0002031C);
inline constexpr IID IID_IMsgServiceAdmin = OleGuid(0x0002031D);
inline constexpr IID IID_IMAPISpoolerService = OleGuid(0x0002031E);
inline constexpr IID IID_IMAPIProgress = OleGuid(0x0002031F);
inline constexpr IID IID_ISpoolerHook = OleGuid(0x00020320);
inline constexpr IID IID_IMAPIViewContext = OleGuid(0x00020321);
inline constexpr IID IID_IMAPIFormMgr = OleGuid(0x00020322);
inline constexpr IID IID_IEnumMAPIFormProp = OleGuid(0x00020323);
inline constexpr IID IID_IMAPIFormInfo = OleGuid(0x00020324);
inline constexpr IID IID_IProviderAdmin = OleGuid(0x00020325);
inline constexpr IID IID_IMAPIForm = OleGuid(0x00020327);
inline constexpr IID IID_IPersistMessage = OleGuid(0x0002032A);
inline constexpr IID IID_IMAPIViewAdviseSink = OleGuid(0x0002032B);
inline constexpr IID IID_IStreamDocfile = OleGuid(0x0002032C);  // a storage's bytes, read as a stream
inline constexpr IID IID_IMAPIFormProp = OleGuid(0x0002032D);
inline constexpr IID IID_IMAPIFormContainer = OleGuid(0x0002032E);
inline constexpr IID IID_IMAPIFormAdviseSink = OleGuid(0x0002032F);
inline constexpr IID IID_IStreamTnef = OleGuid(0x00020330);
inline constexpr IID IID_IMAPIFormFactory = OleGuid(0x00020350);
inline constexpr IID IID_IMAPIMessageSite = OleGuid(0x00020370);
inline constexpr IID IID_IMessageRaw = OleGuid(0x0002038A);
inline constexpr IID IID_IMSCapabilities = OleGuid(0x00020393);
inline constexpr IID IID_CAPONE_PROF = OleGuid(0x00020D0A);

inline constexpr IID IID_IProxyStoreObject = {
    0x29F3AB10, 0x554D, 0x11D0, {0xA9, 0x7C, 0x00, 0xA0, 0xC9, 0x11, 0xF5, 0x0A}};
inline constexpr IID IID_IMAPIGetSession = {
    0x614AB435, 0x491D, 0x4F5B, {0xA8, 0xB4, 0x60, 0xEB, 0x03, 0x10, 0x30, 0xC6}};
inline constexpr IID IID_IConverterSession = {
    0x4B401570, 0xB77B, 0x11D0, {0x9D, 0xA5, 0x00, 0xC0, 0x4F, 0xD6, 0x56, 0x85}};

// Class of the root storage of a message saved as a file.
inline constexpr CLSID CLSID_MailMessage = OleGuid(0x00020D0B);

// ---- Property sets, [MS-OXPROPS] 1.3.2 ------------------------------------------------------------------------------

inline constexpr GUID PS_MAPI = OleGuid(0x00020328);
inline constexpr GUID PS_PUBLIC_STRINGS = OleGuid(0x00020329);
inline constexpr GUID PS_ROUTING_EMAIL_ADDRESSES = OleGuid(0x00020380);
inline constexpr GUID PS_ROUTING_ADDRTYPE = OleGuid(0x00020381);
inline constexpr GUID PS_ROUTING_DISPLAY_NAME = OleGuid(0x00020382);
inline constexpr GUID PS_ROUTING_ENTRYID = OleGuid(0x00020383);
inline constexpr GUID PS_ROUTING_SEARCH_KEY = OleGuid(0x00020384);
inline constexpr GUID PS_INTERNET_HEADERS = OleGuid(0x00020386);
inline constexpr GUID PSETID_Appointment = OleGuid(0x00062002);
inline constexpr GUID PSETID_Task = OleGuid(0x00062003);
inline constexpr GUID PSETID_Address = OleGuid(0x00062004);
inline constexpr GUID PSETID_Common = OleGuid(0x00062008);
inline constexpr GUID PSETID_Log = OleGuid(0x0006200A);
inline constexpr GUID PSETID_Note = OleGuid(0x0006200E);
inline constexpr GUID PSETID_Remote = OleGuid(0x00062014);
inline constexpr GUID PSETID_Sharing = OleGuid(0x00062040);
inline constexpr GUID PSETID_PostRss = OleGuid(0x00062041);
inline constexpr GUID PSETID_Meeting = {0x6ED8DA90, 0x450B, 0x101B, {0x98, 0xDA, 0x00, 0xAA, 0x00, 0x3F, 0x13, 0x05}};
inline constexpr GUID PSETID_UnifiedMessaging = {
    0x4442858E, 0xA9E3, 0x4E80, {0xB9, 0x00, 0x31, 0x7A, 0x21, 0x0C, 0xC1, 0x5B}};
inline constexpr GUID PSETID_Attachment = {
    0x96357F7F, 0x59E1, 0x47D0, {0x99, 0xA7, 0x46, 0x51, 0x5C, 0x18, 0x3B, 0x54}};

// ---- MAPIUIDs: bytes in stored order --------------------------------------------------------------------------------

// Sections of a profile.
inline constexpr MAPIUID kGlobalProfileSection = {
    {0x13, 0xDB, 0xB0, 0xC8, 0xAA, 0x05, 0x10, 0x1A, 0x9B, 0xB0, 0x00, 0xAA, 0x00, 0x2F, 0xC4, 0x5A}};
inline constexpr MAPIUID PS_PROFILE_PROPERTIES = {
    {0x98, 0x15, 0xAC, 0x08, 0xAA, 0xB0, 0x10, 0x1A, 0x8C, 0x93, 0x08, 0x00, 0x2B, 0x2A, 0x56, 0xC2}};
inline constexpr GUID MUID_PROFILE_INSTANCE = OleGuid(0x00020385);

// PR_MDB_PROVIDER: the kind of a store.
inline constexpr MAPIUID kExchangePrivateStore = {
    {0x54, 0x94, 0xA1, 0xC0, 0x29, 0x7F, 0x10, 0x1B, 0xA5, 0x87, 0x08, 0x00, 0x2B, 0x2A, 0x25, 0x17}};
inline constexpr MAPIUID kExchangePublicStore = {
    {0x78, 0xB2, 0xFA, 0x70, 0xAF, 0xF7, 0x11, 0xCD, 0x9B, 0xC8, 0x00, 0xAA, 0x00, 0x2F, 0xC4, 0x5A}};
inline constexpr MAPIUID kExchangeDelegateStore = {
    {0x9E, 0xB4, 0x77, 0x00, 0x74, 0xE4, 0x11, 0xCE, 0x8C, 0x5E, 0x00, 0xAA, 0x00, 0x42, 0x54, 0xE2}};
inline constexpr MAPIUID kPersonalFoldersStore = {
    {0x4E, 0x49, 0x54, 0x41, 0xF9, 0xBF, 0xB8, 0x01, 0x00, 0xAA, 0x00, 0x37, 0xD9, 0x6E, 0x00, 0x00}};

// The provider's bytes within entry ids.
// One-off address, [MS-OXCDATA] 2.2.5.1.
inline constexpr MAPIUID MAPI_ONE_OFF_UID = {
    {0x81, 0x2B, 0x1F, 0xA4, 0xBE, 0xA3, 0x10, 0x19, 0x9D, 0x6E, 0x00, 0xDD, 0x01, 0x0F, 0x54, 0x02}};
// Exchange address book, [MS-OXCDATA] 2.2.5.2.
inline constexpr MAPIUID MUIDEMSAB = {
    {0xDC, 0xA7, 0x40, 0xC8, 0xC0, 0x42, 0x10, 0x1A, 0xB4, 0xB9, 0x08, 0x00, 0x2B, 0x2F, 0xE1, 0x82}};
// Contact as an address, [MS-OXCDATA] 2.2.5.3.
inline constexpr MAPIUID muidContabDLL = {
    {0xFE, 0x42, 0xAA, 0x0A, 0x18, 0xC7, 0x1A, 0x10, 0xE8, 0x85, 0x0B, 0x65, 0x1C, 0x24, 0x00, 0x00}};
// Store wrapped for the session, [MS-OXCDATA] 2.2.4.3.
inline constexpr MAPIUID muidStoreWrap = {
    {0x38, 0xA1, 0xBB, 0x10, 0x05, 0xE5, 0x10, 0x1A, 0xA1, 0xBB, 0x08, 0x00, 0x2B, 0x2A, 0x56, 0xC2}};
