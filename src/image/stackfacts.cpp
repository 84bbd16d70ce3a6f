#include "image/stackfacts.h"

#include <QCoreApplication>
#include <QStringList>

namespace tirn {

namespace {

QString translated(const char* text) { return QCoreApplication::translate("StackFacts", text); }

QString counted(int number, const char* one, const char* many)
{
    return number == 1 ? translated(one) : translated(many).arg(number);
}

QString bitsText(const ImageAttributes& attributes)
{
    if (attributes.maxValue < 0 || attributes.realBitDepth() == attributes.bitDepth)
        return translated("%1 bits").arg(attributes.bitDepth);
    return translated("%1 of %2 bits used").arg(attributes.realBitDepth()).arg(attributes.bitDepth);
}

} // namespace

QString stackFacts(const ImageAttributes& attributes, int channels, int timePoints)
{
    const bool isRead = attributes.x > 0;
    const QString by = QStringLiteral(" %1 ").arg(QChar(0x00d7));
    const auto product = [&](const QStringList& factors) { return factors.join(by); };
    const auto side = [&](int read, int inFile) { return QString::number(isRead ? read : inFile); };
    QStringList facts = {product({side(attributes.x, attributes.fileX), side(attributes.y, attributes.fileY),
                                  side(attributes.z, attributes.fileZ)}),
                         counted(channels, "1 channel", "%1 channels"),
                         counted(timePoints, "1 time point", "%1 time points"), bitsText(attributes)};
    const auto size = [](double microns) { return microns > 0 ? QString::number(microns, 'g', 4) : "?"; };
    if (attributes.dimX > 0 || attributes.dimY > 0 || attributes.dimZ > 0)
        facts.append(product({size(attributes.dimX), size(attributes.dimY), size(attributes.dimZ)}) +
                     QString::fromUtf8(" µm"));
    return facts.join(", ");
}

} // namespace tirn
