#include "formats/vendor/oifparser.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include "base/checkedsize.h"
#include "base/log.h"
#include "formats/files/fileprobe.h"
#include "formats/files/textlines.h"

namespace tirn {

namespace {

/// More of anything than a data set can have.
constexpr int kMost = 1 << 20;

/// The value of the first line whose key begins so; null when there is none.
template <class Section>
QString valueOf(const Section& section, const char* key)
{
    for (const auto& [name, value] : section) {
        if (name.startsWith(QLatin1String(key)))
            return value;
    }
    return {};
}

bool isQuoted(const QString& value, const char* text)
{
    return value.trimmed().compare(QLatin1Char('"') + QLatin1String(text) + QLatin1Char('"'),
                                   Qt::CaseInsensitive) == 0;
}

bool endsSection(const QString& line)
{
    static const QRegularExpression heading(QStringLiteral("^\\[.*\\]\\s*$"));
    return heading.match(line).hasMatch();
}

} // namespace

OifParser::Kind OifParser::kindOf(const QString& heading)
{
    static const QRegularExpression common(QStringLiteral("\\[Acquisition Parameters Common\\]"));
    static const QRegularExpression axis(QStringLiteral("\\[Axis \\d+ Parameters Common\\]"));
    static const QRegularExpression probeChannel(QStringLiteral("\\[Channel (\\d+) Parameters\\]"));
    // Not what the files have, so that the reader passes the channels by.
    static const QRegularExpression readerChannel(QStringLiteral("\\[Channel (\\d+) Common\\]"));
    static const QRegularExpression reference(QStringLiteral("\\[Reference Image Parameter\\]"));
    if (common.match(heading).hasMatch())
        return Kind::Common;
    if (axis.match(heading).hasMatch())
        return Kind::Axis;
    const auto channel = (m_purpose == Purpose::Probe ? probeChannel : readerChannel).match(heading);
    if (channel.hasMatch()) {
        m_channelNumber = channel.captured(1).toInt();
        return Kind::Channel;
    }
    return reference.match(heading).hasMatch() ? Kind::Reference : Kind::None;
}

bool OifParser::parse()
{
    QFile file(m_fileName);
    if (!openForProbe(file))
        return false;
    TextLines lines(file);
    Kind kind = Kind::None;
    Section section;
    for (QString line; lines.next(line);) {
        // A heading ends the section before it and may open the next.
        const Kind opened = kindOf(line);
        if (opened != Kind::None || endsSection(line)) {
            if (!takeSection(kind, section))
                return false;
            section.clear();
            kind = opened;
            continue;
        }
        const QString key = line.section('=', 0, 0);
        const QString value = line.section('=', 1);
        if (key.startsWith(QLatin1String("DataName")))
            m_dataName = QString(value).remove('"').trimmed();
        if (kind != Kind::None)
            section.append({key, value});
    }
    return takeSection(kind, section) && findTiffs();
}

bool OifParser::takeSection(Kind kind, const Section& section)
{
    switch (kind) {
    case Kind::None:
        return true;
    case Kind::Common: {
        const QString date = valueOf(section, "ImageCaputreDate");
        if (!date.isNull()) {
            const QString text = QString(date).remove('\'').remove('"').trimmed().replace(' ', 'T');
            m_attributes.timestamp = QDateTime::fromString(text, Qt::ISODate);
            // No reason to refuse the voxels.
            if (!m_attributes.timestamp.isValid())
                logDebug("problem with common paramters");
        }
        return true;
    }
    case Kind::Axis:
        if (takeAxis(section))
            return true;
        logDebug("problem with axis");
        return false;
    case Kind::Channel:
        if (takeChannel(section))
            return true;
        logDebug("problem with channel");
        return false;
    case Kind::Reference:
        if (takeReference(section))
            return true;
        logDebug("problem with references");
        return false;
    }
    return false;
}

bool OifParser::takeAxis(const Section& section)
{
    const QString name = valueOf(section, "AxisName");
    const int maxSize = valueOf(section, "MaxSize").toInt();
    if (isQuoted(name, "z"))
        return takeDepthAxis(section);
    if (isQuoted(name, "t")) {
        // No time points are one.
        m_attributes.timePoints = maxSize == 0 ? 1 : maxSize;
        return m_attributes.timePoints >= 1 && m_attributes.timePoints <= kMost;
    }
    if (isQuoted(name, "ch")) {
        if (maxSize < 1 || maxSize > kMost)
            return false;
        m_attributes.channels = maxSize;
        m_attributes.excitationWavelengths.clear();
        m_attributes.emissionWavelengths.clear();
        for (int channel = 0; channel < std::min(maxSize, 1024); ++channel) {
            m_attributes.excitationWavelengths.append(0);
            m_attributes.emissionWavelengths.append(0);
        }
    }
    return true;
}

bool OifParser::takeDepthAxis(const Section& section)
{
    const int maxSize = valueOf(section, "MaxSize").toInt();
    if (maxSize < 1 || maxSize > kMost)
        return false;
    m_attributes.fileZ = maxSize;
    const QString unit = valueOf(section, "PixUnit");
    const bool nanometres = isQuoted(unit, "nm");
    if (!unit.isNull() && !nanometres && !isQuoted(unit, "um"))
        return false;
    // Without an interval the size is unknown.
    const QString text = valueOf(section, "Interval");
    if (text.isNull())
        return true;
    const double interval = text.toDouble();
    m_attributes.dimZ = nanometres ? interval / 1000.0 : interval;
    return interval > 0;
}

bool OifParser::takeChannel(const Section& section)
{
    const QString text = valueOf(section, "ExcitationWavelength");
    if (text.isNull())
        return true;
    const double wavelength = text.toDouble();
    if (!(wavelength >= 1))
        return false;
    const int index = m_channelNumber - 1;
    if (index >= 0 && index < m_attributes.excitationWavelengths.size())
        m_attributes.excitationWavelengths[index] = wavelength;
    return true;
}

bool OifParser::takeReference(const Section& section)
{
    const auto reject = [](const char* text) {
        logDebug("%s", text);
        return false;
    };
    ImageAttributes& a = m_attributes;
    for (const auto& [key, value] : section) {
        if (key.startsWith(QLatin1String("ImageWidth"))) {
            a.fileX = value.toInt();
            if (a.fileX < 1)
                return reject("problem with ImageWidth");
        } else if (key.startsWith(QLatin1String("ImageHeight"))) {
            a.fileY = value.toInt();
            if (a.fileY < 1)
                return reject("problem with ImageHeight");
        } else if (key.startsWith(QLatin1String("HeightConvertValue"))) {
            // Height goes with x and width with y, the other way round than one would think.
            a.dimX = value.toDouble();
            if (!(a.dimX > 0))
                return reject("problem with height convert");
        } else if (key.startsWith(QLatin1String("WidthConvertValue"))) {
            a.dimY = value.toDouble();
            if (!(a.dimY > 0))
                return reject("problem with width convert");
        } else if (key.startsWith(QLatin1String("HeightUnit"))) {
            if (!value.contains(QLatin1String("um")))
                return reject("problem with height unit");
        } else if (key.startsWith(QLatin1String("WidthUnit"))) {
            if (!value.contains(QLatin1String("um")))
                return reject("problem with width unit");
        } else if (key.startsWith(QLatin1String("ValidBitCounts"))) {
            a.bitDepth = value.toInt();
            if (a.bitDepth < 8 || a.bitDepth > 16)
                return reject("problem wth bitdepth");
        }
    }
    return true;
}

bool OifParser::findTiffs()
{
    const QDir directory(QFileInfo(m_fileName).absoluteDir().filePath(m_dataName + QLatin1String(".files")));
    if (m_dataName.isEmpty() || !directory.exists()) {
        logDebug(".files does not exist");
        return false;
    }
    const QString start = m_dataName.chopped(std::min<qsizetype>(4, m_dataName.size()));
    m_tiffs.clear();
    for (const QString& name : directory.entryList(QDir::Files, QDir::Name)) {
        if (name.startsWith(start, Qt::CaseInsensitive) &&
            name.endsWith(QLatin1String(".tif"), Qt::CaseInsensitive))
            m_tiffs.append(directory.absoluteFilePath(name));
    }
    const auto wanted =
        static_cast<std::int64_t>(m_attributes.channels) * m_attributes.fileZ * m_attributes.timePoints;
    if (m_tiffs.size() < wanted) {
        logDebug("tiffs %d should be %lld", static_cast<int>(m_tiffs.size()), static_cast<long long>(wanted));
        return false;
    }
    return true;
}

} // namespace tirn
