#pragma once

#include <vector>

#include <QSize>

#include "gl/pbuffer.h"
#include "movies/movieloop.h"
#include "render/offscreenstage.h"

namespace tirn {

/// Draws the frames of a movie of a stage into one off-screen buffer. All time points are loaded.
class OffscreenFrames : public FrameSource
{
public:
    /// With `transparent` pictures have opacity.
    OffscreenFrames(OffscreenStage& stage, QSize size, bool transparent = false);
    ~OffscreenFrames() override;

    bool draw(const KeyFrame& pose, FramePicture* picture) override;
    bool loadTimePoint(int timePoint) override;
    QString error() const override { return m_error; }

private:
    void straighten();

    OffscreenStage& m_stage;
    QSize m_size;
    bool m_transparent;
    PBuffer m_buffer;
    std::vector<std::uint8_t> m_pixels;
    QString m_error;
};

} // namespace tirn
