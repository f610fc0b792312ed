#pragma once

// The user's default language as a Windows language identifier (1041 Japanese, 1033 English
// and so on), taken from the system locale each time it is asked.

#include <QtGlobal>

qint32 GetUserDefaultLangID();
