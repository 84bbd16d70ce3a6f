#include "pictures/picturenames.h"

#include <algorithm>

#include <QRegularExpression>

#include "base/log.h"

namespace tirn {

namespace {

/// The length of every extension of a picture.
constexpr int kExtensionLength = 4;

} // namespace

QString pictureExtension(PictureFormat format)
{
    switch (format) {
    case PictureFormat::Png:
        return ".png";
    case PictureFormat::Raw:
        return ".raw";
    case PictureFormat::Tiff:
        return ".tif";
    case PictureFormat::Printer:
        break;
    }
    return {};
}

QString pictureFileFilter(PictureFormat format)
{
    switch (format) {
    case PictureFormat::Png:
        return "PNG (*.png);; All Files (*)";
    case PictureFormat::Raw:
        return "Raw (*.raw);; All Files (*)";
    case PictureFormat::Tiff:
        return "Tiff (*.tif);; All Files (*)";
    case PictureFormat::Printer:
        break;
    }
    logWarning("Impossible format selected for SnapShot");
    return {};
}

QString fixedPictureName(const QString& name, const QString& extension)
{
    QString base = name;
    for (const char* known : {".png", ".raw", ".tif", ".jpg"}) {
        if (base.endsWith(QLatin1String(known), Qt::CaseInsensitive)) {
            base.chop(kExtensionLength);
            break;
        }
    }
    return base + extension;
}

QString nextPictureName(const QString& name, const QString& extension)
{
    // The dot of the extension stands for any character.
    const QRegularExpression numbered("[0-9]{4,4}" + extension + "$",
                                      QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = numbered.match(name);
    const int number = match.hasMatch() ? match.captured().left(4).toInt() + 1 : 0;
    const auto at = match.hasMatch() ? match.capturedStart() : name.size() - kExtensionLength;
    return name.left(static_cast<int>(std::max<qsizetype>(0, at))) + QString::asprintf("%.4d", number) +
           extension;
}

QString numberedPictureName(const QString& name, std::int64_t number)
{
    const auto dot = name.lastIndexOf('.');
    const auto end = dot > name.lastIndexOf('/') ? dot : name.size();
    return name.left(static_cast<int>(end)) + QString::asprintf("%.4lld", static_cast<long long>(number)) +
           name.mid(static_cast<int>(end));
}

} // namespace tirn
