#include "palettes/palettefile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>

#include "base/log.h"
#include "base/outputfile.h"
#include "palettes/maptext.h"

namespace tirn {

namespace {

using Match = QRegularExpressionMatch;

constexpr int metaMorphSize = 1024;
constexpr int metaMorphHeader = 128;
constexpr int byteEntries = 256;
constexpr qint64 textLimit = 0x100000;
/// For what has no limit of its own: no palette is as long, and some devices have no end.
constexpr qint64 amiraLimit = qint64{64} << 20;
/// Longer lines are comments: no number needs them.
constexpr qint64 longestLine = 0x10000;

/// One of the text formats: how an entry looks, and how many make a palette.
struct TextFormat
{
    const QRegularExpression& pattern;
    PaletteEntry (*entryOf)(const Match& match);
    std::vector<std::size_t> counts;
    /// Characters of line text after which reading stops.
    qint64 limit;
    void (*reportMatches)(int matches);
};

PaletteEntry andorEntry(const Match& match)
{
    return {match.captured(2).toUShort(), match.captured(3).toUShort(), match.captured(4).toUShort(),
            // The index, so that a table read back has a ramp of opacity.
            match.captured(1).toUShort()};
}

std::uint16_t amiraValue(const QString& text)
{
    const float scaled = text.toFloat() * 255;
    return static_cast<std::uint16_t>(std::clamp(std::floor(scaled + 0.5), 0.0, 65535.0));
}

PaletteEntry amiraEntry(const Match& match)
{
    return {amiraValue(match.captured(1)), amiraValue(match.captured(2)), amiraValue(match.captured(3)),
            amiraValue(match.captured(4))};
}

void reportMap(int matches) { logWarning("Did not read palette file correctly! Only %d matches", matches); }

void reportOther(int matches) { logDebug("Did not read palette file correctly! Only %d matches.", matches); }

TextFormat mapFormat() { return {mapPattern(), mapEntry, {256, 4096}, textLimit, reportMap}; }

TextFormat andorFormat()
{
    static const QRegularExpression pattern(R"(^\s*-?(\d+)=+-?(\d+)\s+-?(\d+)\s+-?(\d+)$)");
    return {pattern, andorEntry, {256}, textLimit, reportOther};
}

TextFormat amiraFormat()
{
    // The possessive quantifiers match the same lines; without them a long row of digits takes the square of
    // its length.
    static const QRegularExpression pattern(
        R"(^\s*-?(\d++\.?+\d*+(?:e-\d++)?+)\s+-?(\d++\.?+\d*+(?:e-\d++)?+)\s+)"
        R"(-?(\d++\.?+\d*+(?:e-\d++)?+)\s+-?(\d++\.?+\d*+(?:e-\d++)?+)\s*$)");
    return {pattern, amiraEntry, {256}, amiraLimit, reportOther};
}

/// A line without its end, cut where it is longer than any entry, and the characters that it took.
struct Line
{
    QString text;
    qint64 length;
};

Line readLine(QFile& file, qint64 limit)
{
    QByteArray bytes = file.readLine(longestLine + 1);
    qint64 length = bytes.size();
    for (QByteArray rest = bytes; !rest.endsWith('\n') && !file.atEnd() && length < limit;) {
        rest = file.readLine(longestLine);
        length += rest.size();
    }
    if (bytes.endsWith('\n'))
        bytes.chop(1);
    if (bytes.endsWith('\r'))
        bytes.chop(1);
    return {QString::fromUtf8(bytes), length};
}

std::optional<std::vector<PaletteEntry>> readText(QFile& file, const TextFormat& format,
                                                  QStringList& comments)
{
    std::vector<PaletteEntry> entries;
    qint64 consumed = 0;
    while (!file.atEnd() && consumed < format.limit) {
        const Line line = readLine(file, format.limit);
        const bool tooLong = line.length > longestLine;
        consumed += tooLong ? line.length : line.text.size();
        const Match match = tooLong ? Match() : format.pattern.match(line.text);
        if (match.hasMatch())
            entries.push_back(format.entryOf(match));
        else
            comments.append(line.text);
    }
    if (std::count(format.counts.begin(), format.counts.end(), entries.size()) > 0)
        return entries;
    format.reportMatches(static_cast<int>(entries.size()));
    for (const QString& comment : comments)
        log(LogLevel::Debug, comment);
    return std::nullopt;
}

std::vector<PaletteEntry> readMetaMorph(QFile& file)
{
    logDebug("ok we reading metamorph");
    file.seek(metaMorphHeader);
    QByteArray tables = file.read(3 * byteEntries);
    // A file that ends early is not an error; what is missing is 0.
    tables.append(QByteArray(3 * byteEntries - tables.size(), '\0'));
    const auto byteAt = [&](int i) { return static_cast<std::uint8_t>(tables[i]); };
    std::vector<PaletteEntry> entries;
    entries.reserve(byteEntries);
    for (int i = 0; i < byteEntries; ++i)
        entries.push_back(
            {byteAt(i), byteAt(i + byteEntries), byteAt(i + 2 * byteEntries), static_cast<std::uint16_t>(i)});
    return entries;
}

bool isAmira(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) && file.readLine(255).contains("# AmiraMesh 3D ASCII");
}

double amiraNumber(double value)
{
    const auto number = static_cast<float>(std::floor(value) / 255.0);
    if (number < 0)
        return 0;
    // The bound is that of the scale before the division, so larger values pass.
    return number > 255.0F ? 255.0 : static_cast<double>(number);
}

QString amiraText(const Palette& palette)
{
    const QString date = QLocale::c().toString(QDateTime::currentDateTime(), "ddd MMM dd hh:mm:ss yyyy");
    // The header says 256 also where a deeper table follows.
    QString text =
        "# AmiraMesh 3D ASCII  2.0\n#\n# CreationDate: " + date + "\n\n\n" +
        "define Lattice 256\n\nParameters {\n    ContentType \"Colormap\",\n    MinMax 0 255\n}\n\n" +
        "Lattice { float[4] Data } @1\n\n# Data Section follows\n@1\n";
    for (std::size_t i = 0; i < palette.red().size(); ++i) {
        text +=
            QString::asprintf("%f %f %f %f\n", amiraNumber(palette.red()[i]), amiraNumber(palette.green()[i]),
                              amiraNumber(palette.blue()[i]), amiraNumber(palette.alpha()[i]));
    }
    return text + "\n";
}

QString andorText(const Palette& palette)
{
    QString text = "[Description]\nASCII LUT File=TRUE\n[Red Green Blue]\n";
    // The format holds 256 entries; those of a deeper table beyond them are left out.
    for (int i = 0; i < std::min(palette.size(), byteEntries); ++i) {
        const std::array<int, 4> values = palette.fileValues(i);
        text += QString::asprintf("%.3d=%.3d %.3d %.3d\n", i, values[0], values[1], values[2]);
    }
    return text;
}

} // namespace

bool PaletteFile::read()
{
    m_entries.clear();
    m_comments.clear();
    const QString lower = m_fileName.toLower();
    const bool lut = lower.endsWith(".lut");
    const bool amira = lower.endsWith(".col") && isAmira(m_fileName);

    QFile file(m_fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        logDebug("Could not open %s", m_fileName.toUtf8().constData());
        return false;
    }
    if (lut && file.size() < metaMorphSize) {
        m_entries = readMetaMorph(file);
        return true;
    }
    const TextFormat format = lut ? andorFormat() : amira ? amiraFormat() : mapFormat();
    std::optional<std::vector<PaletteEntry>> entries = readText(file, format, m_comments);
    if (entries)
        m_entries = std::move(*entries);
    return entries.has_value();
}

std::unique_ptr<Palette> PaletteFile::makePalette(PaletteTables* tables) const
{
    return std::make_unique<Palette>(m_entries, 4, QFileInfo(m_fileName).fileName(), tables);
}

bool PaletteFile::write(const Palette& palette) const
{
    return !QFileInfo::exists(m_fileName) && replace(palette);
}

bool PaletteFile::replace(const Palette& palette) const
{
    QString text;
    if (m_fileName.endsWith(".col"))
        text = amiraText(palette);
    else if (m_fileName.endsWith(".lut"))
        text = andorText(palette);
    else
        text = mapText(palette);

    const QByteArray bytes = text.toUtf8();
    return writeFile(m_fileName, bytes.constData(), bytes.size());
}

} // namespace tirn
