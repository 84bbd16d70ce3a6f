#pragma once

#include <QSize>

class QThread;

namespace tirn {

/// What a render thread draws on: a window, or a buffer in a test.
class FrameSurface
{
public:
    virtual ~FrameSurface() = default;

    /// On the owner's thread, before the render thread starts: the context goes over to it.
    virtual void handTo(QThread& thread) = 0;
    /// On the render thread, at its end: the context goes back to the owner's thread.
    virtual void giveBack() = 0;

    virtual bool makeCurrent() = 0;
    virtual void swap() = 0;
    /// In device pixels.
    virtual QSize size() const = 0;
    /// Device pixels a logical pixel.
    virtual double pixelRatio() const = 0;
};

/// What a render thread tells the rest of the program; called on the render thread.
class RenderEvents
{
public:
    virtual ~RenderEvents() = default;

    /// The angles of the frame just drawn, in degrees.
    virtual void rotationDrawn(double x, double y, double z) = 0;
    /// A key frame was recorded; `count` frames stand in the list now.
    virtual void keyFrameRecorded(int count) = 0;
    /// The current volume moved to its next time point by itself.
    virtual void timePointAdvanced() = 0;
};

} // namespace tirn
