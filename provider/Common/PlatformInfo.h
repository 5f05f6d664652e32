// The line of the log's header that names the operating system.
#pragma once

#include "platform/SystemVersion.h"
#include "platform/WideText.h"

namespace Vx {

// "OS Version: Windows XP Professional 5.1 (Build 2600) Service Pack 3, Service Pack Version: 3.0" for the running
// system; what the table does not know is called "Windows". Empty when the system does not tell.
CStringW GetPlatformInfo();

// The same of a given system. Without `extended`, only the fields that OSVERSIONINFOW has are looked at.
CStringW DescribePlatform(const OSVERSIONINFOEXW& version, bool extended);

}  // namespace Vx
