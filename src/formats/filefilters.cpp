#include "formats/filefilters.h"

namespace tirn {

QString stackFileFilter()
{
    const QString all =
        "All supported formats (*.lei *.lsm *.oif *.pic *.r3d *.stk *.tif *.tiff *.txt *.vff);;";
    const QString first = "Biorad (*.pic);;Deltavision (*.r3d);;Dicom (*.dcm);;Leica (*.lei *.txt);;";
    // "*.tif" stands in the text twice.
    const QString second = "Metamorph (*.stk);;MTiff (*.tif *.tiff *.tif);;Olympus (*.oif);;VFF (*.vff);;"
                           "Zeiss (*.lsm);;All files (*)";
    return all + first + second;
}

QString exportFileFilter() { return QStringLiteral("Biorad (*.pic);; MTiff (*.tif *.tiff)"); }

} // namespace tirn
