#pragma once

#include <atomic>

#include <QCoreApplication>

#include "app/events.h"
#include "render/framesurface.h"

namespace tirn {

/// Carries what render threads have to say over to the interface thread. Of each kind one event is on its way
/// at most, however many frames are drawn: what it tells of is read when it arrives.
class RenderEventPoster : public RenderEvents
{
public:
    explicit RenderEventPoster(QObject& receiver) : m_receiver(receiver) {}

    void rotationDrawn(double x, double y, double z) override
    {
        post(m_rotation, [=] { return new RotationEvent(x, y, z); });
    }
    void keyFrameRecorded(int count) override
    {
        post(m_keyFrame, [=] { return new KeyFrameEvent(count); });
    }
    void timePointAdvanced() override
    {
        post(m_timePoint, [] { return new TimePointEvent; });
    }

    /// On the interface thread, when an event of a kind arrives.
    void arrived(EventId id)
    {
        if (id == EventId::Rotation)
            m_rotation = false;
        else if (id == EventId::KeyFrame)
            m_keyFrame = false;
        else if (id == EventId::TimePoint)
            m_timePoint = false;
    }

private:
    template <class Make>
    void post(std::atomic<bool>& isOnItsWay, const Make& make)
    {
        if (!isOnItsWay.exchange(true))
            QCoreApplication::postEvent(&m_receiver, make());
    }

    QObject& m_receiver;
    std::atomic<bool> m_rotation = false;
    std::atomic<bool> m_keyFrame = false;
    std::atomic<bool> m_timePoint = false;
};

} // namespace tirn
