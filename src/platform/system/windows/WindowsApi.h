// windows.h without the macros that would rename functions of this program.
#pragma once

#include <windows.h>

#undef CopyFile
#undef GetPrivateProfileSectionNames
#undef GetPrivateProfileString
#undef WritePrivateProfileString
