#include "threads/loadfailure.h"

namespace tirn {

namespace {

const char* const kUnsupported = " is not a supported file type.  Aborting!";

} // namespace

QString loadFailureText(const ImageFile& image, RenderThreadKind kind)
{
    const ImageAttributes& attributes = image.attributes();
    const QString name = image.fileName();
    if (attributes.type == ImageType::Unknown)
        return image.errorList().join('\n') + '\n' + name + kUnsupported;
    if (attributes.bitDepth > 8 && kind == RenderThreadKind::Paletted)
        return name + " is a " + QString::number(attributes.bitDepth) +
               "-bit stack.\n  Greater than 8-bit images are not supported on your video card.  Please "
               "convert the stack.";
    QStringList texts = image.errorList();
    texts.prepend("I cannot undestand the data in " + name + " for some reason.");
    return texts.join('\n');
}

QString loadFailureText(const QString& name) { return name + kUnsupported + '\n'; }

} // namespace tirn
