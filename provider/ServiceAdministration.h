// The steps that all work on a profile's services begins with: the services' administration, their list, and the
// providers of one of them. Each gives false for a failure, or for a success without an object, with one error line in
// the log. Holders given for results must be empty.
#pragma once

#include "mapi/MapiProfileInterfaces.h"
#include "platform/WideText.h"
#include "provider/MapiHolders.h"

// The name of the Exchange service.
inline constexpr auto& kExchangeService = "MSEMS"_w;

// The administration of all profiles: "MAPIAdminProfiles failed (%x)".
bool OpenProfileAdmin(VxMapiPtr<IProfAdmin>& profiles);

// The administration of one profile's services: as before, and `failureText` with the result.
inline constexpr auto& kAdminServicesFailed = "IProfAdmin/AdminServices failed (%x)"_w;
bool OpenServiceAdmin(const CStringW& profileName, VxMapiPtr<IMsgServiceAdmin>& services,
                      const WCHAR* failureText = kAdminServicesFailed);

// The services as rows of the given columns, all of them or those of Exchange only. A list without rows is a failure.
enum class ServiceFilter { None, Exchange };
bool ReadServices(IMsgServiceAdmin* services, LPSPropTagArray columns, ServiceFilter filter,
                  VxLpRowsPtr<SRowSet>& rows);

// The administration of the providers of the service whose PR_SERVICE_UID stands in that column.
bool OpenProviderAdmin(IMsgServiceAdmin* services, const SRow& service, ULONG uidColumn,
                       VxMapiPtr<IProviderAdmin>& providers);
