#pragma once

// Which word processor can finish .doc files, as a version number on Word's scale: the major
// version in the upper 16 bits, the minor in the lower, 0 for none. Each caller applies its
// own threshold: 0x00090000 (9.0) is the least that can finish at all, and below 0x00110000
// (17.0) the finishing ends the started process through the process utility library.
//
// The word processor here is LibreOffice, whose versions are moved onto Word's scale by adding
// 9 to the major version, the minor staying as it is:
//
//   LibreOffice 3.3 .. 7.x   ->  12.3 .. 16.x  ended through the process utility library
//   LibreOffice 7.4          ->  16.4 (0x00100004)
//   LibreOffice 8.0 and on   ->  17.0 and on   ended through the suite's own quit
//   (LibreOffice 24.2        ->  33.2)
//
// so every LibreOffice counts as installed, and a major version too large for the scale reads
// as the largest one.

#include <QtGlobal>

// The lowest version that can finish a .doc at all; less counts as no word processor.
inline constexpr qint32 LowestFinishingVersion = 0x00090000;

struct AppContext;

// The office suite's version mapped as above.
qint32 WordScaleVersion(qint32 officeVersion);

// Finds the office suite's program and reads its file version through the process utility
// library, with the working directory set to the application directory meanwhile. 0 when
// there is no suite, its program can't be run or its version can't be read.
qint32 GetWordVersion(AppContext& context);
