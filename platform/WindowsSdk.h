// The Windows SDK as this tree includes it: one place that chooses the headers and takes back the macros that would
// rename our own operations (GetCurrentDirectory, GetObject, ...). Only headers of platform/ include it.
#pragma once

#ifndef _WIN32
#error "platform/WindowsSdk.h is for Windows builds; on Linux the headers of platform/ declare what is used"
#endif

// clang-format off
#include <winsock2.h>  // before windows.h, which would bring the older one
#include <windows.h>
#include <objbase.h>
#include <objidl.h>
#include <ole2.h>
#include <oleauto.h>
// clang-format on

#undef CopyFile
#undef CreateDirectory
#undef CreateFile
#undef DeleteFile
#undef GetClassName
#undef GetCurrentDirectory
#undef GetMessage
#undef GetObject
#undef GetTempFileName
#undef MoveFile
#undef SetCurrentDirectory
#undef SetPort
#undef interface
#undef small
