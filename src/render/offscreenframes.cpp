#include "render/offscreenframes.h"

#include <algorithm>

#include "gl/gltable.h"
#include "pictures/picturesize.h"
#include "render/picturemaker.h"
#include "scene/keyframeview.h"

namespace tirn {

OffscreenFrames::OffscreenFrames(OffscreenStage& stage, QSize size, bool transparent)
    : m_stage(stage), m_size(size), m_transparent(transparent), m_buffer("rgba", true)
{
    stage.makeCurrent();
    const int limit = PBuffer::largestSide();
    if (!m_buffer.Initialize(size.width(), size.height(), false, true)) {
        m_error = QString("Frames of %1 x %2 pixels cannot be drawn; the driver's limit is %3")
                      .arg(size.width())
                      .arg(size.height())
                      .arg(limit);
        return;
    }
    m_pixels.resize(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()) * 4);
    m_buffer.Activate();
    stage.thread().setupBuffer();
}

OffscreenFrames::~OffscreenFrames() { m_buffer.Deactivate(); }

bool OffscreenFrames::draw(const KeyFrame& pose, FramePicture* picture)
{
    if (!m_buffer.isActive())
        return false;
    showKeyFrame(pose, m_stage.scene);
    ViewState& view = m_stage.scene.view;
    view.rotX = wrapDegrees(pose.xrot);
    view.rotY = wrapDegrees(pose.yrot);
    view.rotZ = wrapDegrees(pose.zrot);
    showPalettes(pose, m_stage.scene);
    const QRect whole(QPoint(0, 0), m_size);
    if (!m_stage.thread().drawPicture({m_size, whole, overlayScale(m_size), m_transparent}))
        return false;
    if (picture != nullptr) {
        gl().ReadPixels(0, 0, m_size.width(), m_size.height(), GL_BGRA, GL_UNSIGNED_BYTE, m_pixels.data());
        if (m_transparent)
            straighten();
        *picture = {m_pixels.data(), m_size.width(), m_size.height(), m_transparent};
    }
    return true;
}

/// Takes the opacity, with which the card has multiplied the colours, out of them.
void OffscreenFrames::straighten()
{
    QImage picture(m_pixels.data(), m_size.width(), m_size.height(), QImage::Format_ARGB32_Premultiplied);
    limitToOpacity(picture);
    const QImage straight = picture.convertToFormat(QImage::Format_ARGB32);
    std::copy_n(straight.constBits(), m_pixels.size(), m_pixels.begin());
}

bool OffscreenFrames::loadTimePoint(int timePoint)
{
    m_stage.scene.current()->setTimePoint(timePoint);
    return true;
}

} // namespace tirn
