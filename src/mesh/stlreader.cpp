#include "mesh/stlreader.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include "base/bytereader.h"
#include "base/log.h"

namespace tirn {

namespace {

// The binary layout: a header of 80 bytes, the number of facets, and for each of them a normal, three
// vertices and a word of attributes.
constexpr qint64 kHeaderBytes = 80;
constexpr qint64 kCountBytes = 4;
constexpr qint64 kRecordBytes = 50;
constexpr qint64 kRecordsAtATime = 8192;
constexpr std::size_t kFloatsOfRecord = 12;
/// Longer lines are none of this format.
constexpr qint64 kLongestLine = 0x10000;
constexpr std::size_t kFacetsBetweenLogs = 10000;

/// A pattern of the ASCII form. "%1" stands for a number: digits, one character that may be any, digits; no
/// exponent. The possessive quantifiers match the same lines; without them a long row of digits takes the
/// square of its length.
QRegularExpression pattern(const char* text)
{
    return QRegularExpression(QString(text).replace("%1", R"((-?\d++.?\d*+))"),
                              QRegularExpression::UseUnicodePropertiesOption |
                                  QRegularExpression::DotMatchesEverythingOption);
}

/// A line of a facet, and what is said where it is another one.
struct FacetLine
{
    QRegularExpression pattern;
    const char* otherwise;
    /// The place of its numbers: 0 to 2 for a vertex, 3 for the normal, -1 for none.
    int place;
};

constexpr int kNormal = 3;

const std::vector<FacetLine>& facetLines()
{
    // The normal allows no white space behind it, a vertex does.
    static const QRegularExpression vertex = pattern(R"(^\s*vertex\s*%1\s+%1\s+%1\s*$)");
    static const std::vector<FacetLine> lines = {
        {pattern(R"(^\s*facet\s*normal\s*%1\s+%1\s+%1$)"), "can't find normal", kNormal},
        {pattern(R"(^\s*outer\s+loop\s*$)"), "can't find outer loop", -1},
        {vertex, "can't find vertex 1", 0},
        {vertex, "can't find vertex 2", 1},
        {vertex, "can't find vertex 3", 2},
        {pattern(R"(^\s*endloop\s*$)"), "can't find endloop", -1},
        {pattern(R"(^\s*endfacet\s*$)"), "can't find endfacet", -1},
    };
    return lines;
}

/// The number that a capture begins with: "1,5" is 1. Too large a one is infinite.
float leadingNumber(const QString& text)
{
    const QByteArray bytes = text.toLatin1();
    float number = 0;
    const auto result = std::from_chars(bytes.constData(), bytes.constData() + bytes.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        const bool large = std::fabs(bytes.toDouble()) > 1;
        number = !large                  ? 0
                 : bytes.startsWith('-') ? -std::numeric_limits<float>::infinity()
                                         : std::numeric_limits<float>::infinity();
    }
    return number;
}

Vector3f vectorOf(const QRegularExpressionMatch& match)
{
    return {leadingNumber(match.captured(1)), leadingNumber(match.captured(2)),
            leadingNumber(match.captured(3))};
}

/// The next line without its end; empty at the end of the file.
QString nextLine(QFile& file)
{
    QByteArray line = file.readLine(kLongestLine);
    if (line.endsWith('\n'))
        line.chop(1);
    if (line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

/// The reason why the lines from `first` on are no facet; empty, with the facet, when they are.
QString readFacet(QFile& file, QString line, Triangle& facet)
{
    for (const FacetLine& wanted : facetLines()) {
        const QRegularExpressionMatch match = wanted.pattern.match(line);
        if (!match.hasMatch())
            return wanted.otherwise;
        if (wanted.place == kNormal)
            facet.normal = vectorOf(match);
        else if (wanted.place >= 0)
            facet.vertices[static_cast<std::size_t>(wanted.place)] = vectorOf(match);
        if (&wanted != &facetLines().back())
            line = nextLine(file);
    }
    return {};
}

QString readAscii(QFile& file, std::vector<Triangle>& facets)
{
    static const QRegularExpression end = pattern(R"(^\s*endsolid\s*$)");
    for (;;) {
        const QString line = nextLine(file);
        if (end.match(line).hasMatch())
            return {};
        Triangle facet;
        const QString reason = readFacet(file, line, facet);
        if (!reason.isEmpty())
            return reason;
        facets.push_back(facet);
        if (facets.size() % kFacetsBetweenLogs == 0)
            logDebug("facets: %d", static_cast<int>(facets.size()));
    }
}

Triangle facetOfRecord(const char* bytes)
{
    static_assert(std::endian::native == std::endian::little,
                  "the numbers of a record are taken as they lie");
    std::array<float, kFloatsOfRecord> numbers;
    std::memcpy(numbers.data(), bytes, sizeof numbers);
    Triangle facet;
    std::copy_n(numbers.begin(), 3, facet.normal.begin());
    for (std::size_t v = 0; v < 3; ++v)
        std::copy_n(numbers.begin() + 3 + 3 * static_cast<std::ptrdiff_t>(v), 3, facet.vertices[v].begin());
    return facet;
}

QString readBinary(QFile& file, std::vector<Triangle>& facets)
{
    const QByteArray head = file.seek(0) ? file.read(kHeaderBytes + kCountBytes) : QByteArray();
    if (head.size() < kHeaderBytes + kCountBytes)
        return "No idea what this file is";
    const std::uint32_t count = ByteReader(head.constData() + kHeaderBytes, kCountBytes).u32();
    logDebug(" facets %d", static_cast<int>(count));
    // The count may say anything: the file's length decides.
    const qint64 wanted = std::min<qint64>(count, (file.size() - head.size()) / kRecordBytes);
    facets.reserve(static_cast<std::size_t>(std::max<qint64>(wanted, 0)));
    while (facets.size() < count) {
        const qint64 records = std::min<qint64>(kRecordsAtATime, count - static_cast<qint64>(facets.size()));
        const QByteArray bytes = file.read(records * kRecordBytes);
        for (qint64 at = 0; at + kRecordBytes <= bytes.size(); at += kRecordBytes)
            facets.push_back(facetOfRecord(bytes.constData() + at));
        if (bytes.size() < records * kRecordBytes)
            break;
    }
    if (facets.size() != count)
        logWarning("facet count does not match %d vs %d", static_cast<int>(facets.size()),
                   static_cast<int>(count));
    return {};
}

} // namespace

QString readStl(const QString& fileName, StlContent& content)
{
    const QFileInfo info(fileName);
    QFile file(fileName);
    if (!info.isFile() || !file.open(QIODevice::ReadOnly))
        return "Failed to load";
    static const QRegularExpression solid = pattern(R"(^\s*solid\s*(.*)$)");
    const QRegularExpressionMatch match = solid.match(nextLine(file));
    if (!match.hasMatch())
        return readBinary(file, content.facets);
    content.name = match.captured(1);
    return readAscii(file, content.facets);
}

} // namespace tirn
