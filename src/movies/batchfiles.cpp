#include "movies/batchfiles.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTime>

namespace tirn {

QStringList matchingSeries(const QString& firstName, const QStringList& names)
{
    static const QRegularExpression spaces(R"(\s+)", QRegularExpression::UseUnicodePropertiesOption);
    QString pattern;
    const QStringList words = QFileInfo(firstName).baseName().split(spaces);
    for (qsizetype w = 0; w < words.size(); ++w) {
        pattern += w > 0 ? R"(\s+)" : "";
        for (const QChar character : words[w])
            pattern += character.isDigit() ? QString(R"((\d))") : QRegularExpression::escape(character);
    }
    const QRegularExpression series(pattern, QRegularExpression::UseUnicodePropertiesOption);
    return names.filter(series);
}

QStringList continuedTimes(const QString& first, const QString& second, int count)
{
    const QTime start = QTime::fromString(first, Qt::ISODate);
    const QTime next = QTime::fromString(second, Qt::ISODate);
    if (!start.isValid() || !next.isValid())
        return {};
    const QString format = start.msec() != 0 ? "hh:mm:ss.zzz" : "hh:mm:ss";
    // As many milliseconds as a day has bring a time back to itself.
    constexpr qint64 day = qint64{24} * 3600 * 1000;
    const qint64 step = start.msecsTo(next);
    QStringList times;
    for (int row = 0; row < count; ++row)
        times << start.addMSecs(static_cast<int>(row * step % day)).toString(format);
    return times;
}

} // namespace tirn
