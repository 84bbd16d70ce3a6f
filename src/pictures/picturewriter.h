#pragma once

#include <QImage>
#include <QString>

#include "pictures/picturenames.h"

namespace tirn {

/// Writers of pictures with 32 bits a pixel. Each writes beside its file and renames, so that a failure
/// leaves what was there; the result is a text of what went wrong, empty when all is well.
///
/// A transparent picture keeps its alpha in a PNG; the other formats have none.
QString savePng(QImage picture, const QString& name, int dpi);

/// R, G, B for each pixel, rows from the top, no header.
QString saveRaw(const QImage& picture, const QString& name);

/// One sample a pixel where the picture is grey all over, unless `keepColour`; otherwise R, G, B.
QString saveTiff(const QImage& picture, const QString& name, int dpi, bool keepColour = false);

/// Whichever of the three; a printer is none.
QString savePicture(const QImage& picture, const QString& name, PictureFormat format, int dpi,
                    bool keepColour = false);

} // namespace tirn
