#pragma once

// Which language the test program runs under: the test registration gives each locale its
// own run, and the expectations differ by language.

#include <QString>

inline bool RunsInJapanese()
{
    return qEnvironmentVariable("VELMORA_TEST_LOCALE") == QStringLiteral("ja");
}
