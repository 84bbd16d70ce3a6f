#pragma once

#include <vector>

#include <QImage>

#include "gl/pbuffer.h"
#include "movies/movieloop.h"
#include "render/offscreenstage.h"

namespace tirn {

/// Draws the frames of a movie of a stage into one off-screen buffer. All time points are loaded.
class OffscreenFrames : public FrameSource
{
public:
    /// With `transparent` pictures have opacity, their colours multiplied by it.
    OffscreenFrames(OffscreenStage& stage, QSize size, bool transparent = false);
    ~OffscreenFrames() override;

    bool draw(const KeyFrame& pose, FramePicture* picture) override;
    bool loadTimePoint(int timePoint) override;
    QString error() const override { return m_error; }

private:
    OffscreenStage& m_stage;
    QSize m_size;
    bool m_transparent;
    PBuffer m_buffer;
    std::vector<std::uint8_t> m_pixels;
    QString m_error;
};

/// A picture whose colours are multiplied by its opacity, with straight ones; top row first.
QImage straightPicture(const FramePicture& picture);

} // namespace tirn
