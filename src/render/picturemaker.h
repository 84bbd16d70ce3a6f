#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include "base/progress.h"
#include "render/glthread.h"

namespace tirn {

/// A picture of the scene, in pixels.
struct PictureRequest
{
    QSize size;
    /// By how much overlays are larger than in a plain window of 512 pixels.
    double overlayScale = 1;
    /// Nothing behind the volume, and opacity in the picture; for alpha blending only.
    bool transparent = false;
};

/// Draws pictures of any size into an off-screen buffer, with the frame function of the window: in one piece
/// up to the driver's limit, beyond it in tiles.
///
/// The render thread must not be running. A context of its share group is current on the calling thread.
class PictureMaker
{
public:
    /// `limits` lower those of the driver where they are above 0.
    struct Limits
    {
        int tile = 0;
        int viewport = 0;
    };
    explicit PictureMaker(GLThread& thread, const Limits& limits);
    explicit PictureMaker(GLThread& thread) : PictureMaker(thread, Limits()) {}

    /// The picture, 32 bits a pixel. Null when it was cancelled or could not be made; `error` says why.
    /// Reports one step a tile.
    QImage draw(const PictureRequest& request, const Progress& progress = {});
    /// Empty when the last picture was made or cancelled.
    const QString& error() const { return m_error; }

private:
    bool drawTiles(const PictureRequest& request, const Progress& progress, QImage& picture);

    GLThread& m_thread;
    Limits m_limits;
    QString m_error;
};

/// Cuts colours that are multiplied by their opacity, and that rounding has made brighter than it, to it.
void limitToOpacity(QImage& picture);

} // namespace tirn
