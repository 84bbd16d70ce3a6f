#include "session/rawlayouttext.h"

#include <algorithm>
#include <vector>

namespace tirn {

namespace {

/// What can be typed in for a headerless file.
constexpr qint64 kLargestSide = 65535;

} // namespace

QStringList rawLayoutTexts(const RawLayout& raw)
{
    QStringList numbers = {QString::number(raw.headerOffset)};
    for (const int number : {raw.x, raw.y, raw.z, raw.bitDepth, raw.swapBytes ? 1 : 0})
        numbers.append(QString::number(number));
    return numbers;
}

std::optional<RawLayout> rawLayoutOf(const QStringList& texts)
{
    std::vector<qint64> numbers;
    for (const QString& text : texts) {
        bool ok = false;
        numbers.push_back(text.toLongLong(&ok));
        if (!ok)
            return std::nullopt;
    }
    const auto isSide = [](qint64 number) { return number >= 1 && number <= kLargestSide; };
    if (numbers.size() != 6 || numbers[0] < 0 || !std::all_of(&numbers[1], &numbers[4], isSide) ||
        (numbers[4] != 8 && numbers[4] != 16))
        return std::nullopt;
    return RawLayout{numbers[0],
                     static_cast<int>(numbers[1]),
                     static_cast<int>(numbers[2]),
                     static_cast<int>(numbers[3]),
                     static_cast<int>(numbers[4]),
                     numbers[5] != 0};
}

} // namespace tirn
