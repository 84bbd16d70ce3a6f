#include "formats/files/fileprobe.h"

#include <QFileInfo>

namespace tirn {

bool openForProbe(QFile& file)
{
    const QFileInfo info(file);
    return info.exists() && info.isReadable() && info.isFile() && file.open(QIODevice::ReadOnly);
}

} // namespace tirn
