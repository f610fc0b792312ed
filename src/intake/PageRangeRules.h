#pragma once

// The rules of a page range as the user types it: whole numbers in the user's locale, counted
// from 1, not past the last page and not backwards.

#include <QString>
#include <QtGlobal>

#include <optional>

// A text as a 16-bit whole number the way the user's locale writes numbers: blanks around it
// are allowed and a fraction rounds to the nearest whole number, a half to the even one.
// Empty for text that is no number or lies outside -32768..32767.
std::optional<qint16> ToWholeNumber(const QString& text);

struct PageRange final
{
    qint16 from = 0;  // zero-based
    qint16 to = 0;    // zero-based, inclusive
};

// The zero-based range for the typed texts, or empty when it is no valid range of a document
// of `pageCount` pages.
std::optional<PageRange> ParsePageRange(const QString& fromText, const QString& toText,
                                        qint32 pageCount);

// "(12 pages total)" in English: the page count text of the range dialog.
QString PageCountText(qint32 pageCount);
