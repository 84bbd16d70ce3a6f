#include "mesh/stlreader.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>

#include <QFile>
#include <QFileInfo>

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
constexpr std::size_t kLongestLine = 0x10000;
constexpr std::size_t kBufferBytes = 1 << 20;
constexpr std::size_t kFacetsBetweenLogs = 10000;

/// The lines of a file, without their ends; empty ones behind its end.
class Lines
{
public:
    explicit Lines(QFile& file) : m_file(file), m_buffer(kBufferBytes) {}

    /// Valid until the next call.
    std::string_view next()
    {
        if (!m_complete && m_end - m_at < kLongestLine)
            fill();
        const std::string_view rest(m_buffer.data() + m_at, std::min(m_end - m_at, kLongestLine));
        const std::size_t length = std::min(rest.find('\n'), rest.size());
        m_at += std::min(length + 1, rest.size());
        return rest.substr(0, length > 0 && rest[length - 1] == '\r' ? length - 1 : length);
    }

private:
    void fill()
    {
        std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_at),
                  m_buffer.begin() + static_cast<std::ptrdiff_t>(m_end), m_buffer.begin());
        m_end -= m_at;
        m_at = 0;
        const qint64 read =
            m_file.read(m_buffer.data() + m_end, static_cast<qint64>(m_buffer.size() - m_end));
        m_complete = read <= 0;
        m_end += static_cast<std::size_t>(std::max<qint64>(0, read));
    }

    QFile& m_file;
    std::vector<char> m_buffer;
    std::size_t m_at = 0;
    std::size_t m_end = 0;
    bool m_complete = false;
};

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// A line that is taken from its beginning.
class Taker
{
public:
    explicit Taker(std::string_view line) : m_rest(line) {}

    /// Takes blanks, as many as there are.
    Taker& blanks()
    {
        while (!m_rest.empty() && isBlank(m_rest.front()))
            m_rest.remove_prefix(1);
        return *this;
    }
    bool word(std::string_view word) { return m_rest.starts_with(word) && drop(word.size()); }
    bool character(std::string_view oneOf)
    {
        return !m_rest.empty() && oneOf.find(m_rest.front()) != std::string_view::npos && drop(1);
    }
    /// Any one character, which may be several bytes long.
    bool anyCharacter()
    {
        if (m_rest.empty())
            return false;
        std::size_t bytes = 1;
        while (bytes < m_rest.size() && (m_rest[bytes] & 0xC0) == 0x80)
            ++bytes;
        return drop(bytes);
    }
    /// Takes digits; false where there are none.
    bool digits()
    {
        const std::size_t before = m_rest.size();
        while (!m_rest.empty() && isDigit(m_rest.front()))
            m_rest.remove_prefix(1);
        return m_rest.size() < before;
    }
    bool startsWithBlank() const { return !m_rest.empty() && isBlank(m_rest.front()); }
    bool atEnd() const { return m_rest.empty(); }
    std::string_view rest() const { return m_rest; }

private:
    bool drop(std::size_t bytes)
    {
        m_rest.remove_prefix(bytes);
        return true;
    }

    std::string_view m_rest;
};

/// The number that a text begins with: "1,5" is 1. Too large a one is infinite.
float leadingNumber(std::string_view text)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    float number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        const auto used = static_cast<int>(result.ptr - text.data());
        const bool large = std::fabs(QByteArray(text.data(), used).toDouble()) > 1;
        number = !large                  ? 0
                 : text.starts_with('-') ? -std::numeric_limits<float>::infinity()
                                         : std::numeric_limits<float>::infinity();
    }
    return number;
}

bool takeNumbers(const Taker& line, std::size_t index, Vector3f& numbers);

/// Whether the line goes on as it must behind number `index`, which ends where `line` stands.
bool goesOn(Taker line, std::size_t index, Vector3f& numbers)
{
    if (index + 1 == numbers.size())
        return line.blanks().atEnd();
    return line.startsWithBlank() && takeNumbers(line.blanks(), index + 1, numbers);
}

bool takesExponent(Taker& line)
{
    if (!line.character("eE"))
        return false;
    line.character("+-");
    return line.digits();
}

/// The numbers from `index` on, with blanks between, up to the end of the line. A number is digits, one
/// character that may be any, digits; an exponent may follow where that character is a point or is missing.
bool takeNumbers(const Taker& line, std::size_t index, Vector3f& numbers)
{
    Taker whole = line;
    whole.character("+-");
    if (!whole.digits())
        return false;
    const auto keep = [&] {
        numbers[index] = leadingNumber(line.rest());
        return true;
    };
    Taker fraction = whole;
    const bool point = fraction.character(".");
    if (point || fraction.anyCharacter()) {
        fraction.digits();
        Taker exponent = fraction;
        if (point && takesExponent(exponent) && goesOn(exponent, index, numbers))
            return keep();
        if (goesOn(fraction, index, numbers))
            return keep();
    }
    Taker exponent = whole;
    return ((takesExponent(exponent) && goesOn(exponent, index, numbers)) || goesOn(whole, index, numbers)) &&
           keep();
}

/// A line of a facet: one word or two, then numbers or none, and what is said where it is another one.
struct FacetLine
{
    const char* word;
    const char* second;
    /// Between the words there must be a blank.
    bool apart;
    /// The place of its numbers: 0 to 2 for a vertex, 3 for the normal, -1 for none.
    int place;
    const char* otherwise;
};

constexpr int kNormal = 3;
constexpr FacetLine kFacetLines[] = {
    {"facet", "normal", false, kNormal, "can't find normal"},
    {"outer", "loop", true, -1, "can't find outer loop"},
    {"vertex", "", false, 0, "can't find vertex 1"},
    {"vertex", "", false, 1, "can't find vertex 2"},
    {"vertex", "", false, 2, "can't find vertex 3"},
    {"endloop", "", false, -1, "can't find endloop"},
    {"endfacet", "", false, -1, "can't find endfacet"},
};

bool matches(std::string_view text, const FacetLine& wanted, Triangle& facet)
{
    Taker line(text);
    if (!line.blanks().word(wanted.word) || (wanted.apart && !line.startsWithBlank()) ||
        !line.blanks().word(wanted.second))
        return false;
    line.blanks();
    if (wanted.place < 0)
        return line.atEnd();
    return takeNumbers(line, 0,
                       wanted.place == kNormal ? facet.normal
                                               : facet.vertices[static_cast<std::size_t>(wanted.place)]);
}

/// The reason why the lines from `line` on are no facet; null, with the facet, when they are.
const char* readFacet(Lines& lines, std::string_view line, Triangle& facet)
{
    for (const FacetLine& wanted : kFacetLines) {
        if (!matches(line, wanted, facet))
            return wanted.otherwise;
        if (&wanted != std::end(kFacetLines) - 1)
            line = lines.next();
    }
    return nullptr;
}

/// "endsolid", with or without a name.
bool isEnd(std::string_view text)
{
    Taker line(text);
    return line.blanks().word("endsolid") && (line.atEnd() || line.startsWithBlank());
}

QString readAscii(Lines& lines, std::vector<Triangle>& facets)
{
    for (;;) {
        const std::string_view line = lines.next();
        if (isEnd(line))
            return {};
        Triangle facet;
        if (const char* reason = readFacet(lines, line, facet))
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

/// The number of facets that the head of a binary file states; nothing for a file without one.
std::optional<std::uint32_t> statedFacets(QFile& file)
{
    const QByteArray head = file.seek(0) ? file.read(kHeaderBytes + kCountBytes) : QByteArray();
    if (head.size() < kHeaderBytes + kCountBytes)
        return std::nullopt;
    return ByteReader(head.constData() + kHeaderBytes, kCountBytes).u32();
}

/// Reads the records, at the first of which the file stands.
void readBinary(QFile& file, std::uint32_t count, std::vector<Triangle>& facets)
{
    logDebug(" facets %d", static_cast<int>(count));
    // The count may say anything: the file's length decides.
    const qint64 wanted = std::min<qint64>(count, (file.size() - file.pos()) / kRecordBytes);
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
}

} // namespace

QString readStl(const QString& fileName, StlContent& content)
{
    const QFileInfo info(fileName);
    QFile file(fileName);
    if (!info.isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return "Failed to load";
    const std::optional<std::uint32_t> count = statedFacets(file);
    const auto readRecords = [&] {
        readBinary(file, *count, content.facets);
        return QString();
    };
    // Some programs begin binary files with "solid", too. The count of a text, four of its characters, would
    // need gigabytes of records.
    if (count && file.size() >= file.pos() + kRecordBytes * std::int64_t{*count})
        return readRecords();
    const qint64 behindHead = file.pos();
    file.seek(0);
    Lines lines(file);
    Taker first(lines.next());
    if (first.blanks().word("solid")) {
        const std::string_view name = first.blanks().rest();
        content.name = QString::fromUtf8(name.data(), static_cast<int>(name.size()));
        return readAscii(lines, content.facets);
    }
    if (!count)
        return "No idea what this file is";
    file.seek(behindHead);
    return readRecords();
}

} // namespace tirn
