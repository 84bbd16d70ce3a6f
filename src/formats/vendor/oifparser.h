#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include "image/imageattributes.h"

namespace tirn {

/// Reads the text file of an Olympus data set and finds the TIFF files that it stands for.
class OifParser
{
public:
    /// The probe and the reader look for the channels under different headings; the reader's are never there.
    enum class Purpose { Probe, Reader };

    OifParser(QString fileName, Purpose purpose) : m_fileName(std::move(fileName)), m_purpose(purpose) {}

    /// False, with the reason logged, when the text or the directory beside it are not those of a data set.
    bool parse();

    /// What the text says; the type is not set.
    const ImageAttributes& attributes() const { return m_attributes; }
    int timePoints() const { return m_attributes.timePoints; }
    /// The TIFF files in name order, with their paths.
    const QStringList& tiffs() const { return m_tiffs; }

private:
    using Section = QList<QPair<QString, QString>>;
    enum class Kind { None, Common, Axis, Channel, Reference };

    Kind kindOf(const QString& heading);
    bool takeSection(Kind kind, const Section& section);
    bool takeAxis(const Section& section);
    bool takeDepthAxis(const Section& section);
    bool takeChannel(const Section& section);
    bool takeReference(const Section& section);
    bool findTiffs();

    QString m_fileName;
    Purpose m_purpose;
    ImageAttributes m_attributes;
    QString m_dataName;
    int m_channelNumber = 0;
    QStringList m_tiffs;
};

} // namespace tirn
