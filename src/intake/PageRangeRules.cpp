#include "intake/PageRangeRules.h"

#include "core/LocalText.h"

#include <QLocale>

#include <cmath>
#include <limits>

std::optional<qint16> ToWholeNumber(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return std::nullopt;
    bool ok = false;
    double value = QLocale::system().toDouble(trimmed, &ok);
    if (!ok)
        value = QLocale::c().toDouble(trimmed, &ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    // The default rounding mode rounds a half to the even neighbour.
    const double whole = std::nearbyint(value);
    if (whole < std::numeric_limits<qint16>::min() || whole > std::numeric_limits<qint16>::max())
        return std::nullopt;
    return static_cast<qint16>(whole);
}

std::optional<PageRange> ParsePageRange(const QString& fromText, const QString& toText,
                                        qint32 pageCount)
{
    const std::optional<qint16> from = ToWholeNumber(fromText);
    const std::optional<qint16> to = ToWholeNumber(toText);
    // Subtracting 1 from the smallest number overflows; such a page is invalid anyway.
    if (!from || !to || *from == std::numeric_limits<qint16>::min() ||
        *to == std::numeric_limits<qint16>::min())
        return std::nullopt;
    const auto f = static_cast<qint16>(*from - 1);
    const auto t = static_cast<qint16>(*to - 1);
    if (f > t || f < 0 || t < 0 || t >= pageCount)
        return std::nullopt;
    return PageRange{f, t};
}

QString PageCountText(qint32 pageCount)
{
    return QStringLiteral("(") + LocalText(6002, QString()) + QString::number(pageCount) +
           LocalText(6003, QStringLiteral(" pages total")) + QStringLiteral(")");
}
