#pragma once

#include <memory>
#include <vector>

#include <QEvent>
#include <QString>
#include <QStringList>

#include "threads/loadreport.h"

namespace tirn {

/// The ids of the program's own events.
enum class EventId {
    Rotation = 1001,
    Progress = 1002,
    StackLoaded = 1003,
    KeyFrame = 1004,
    Start = 1006,
    ReencodeDone = 1007,
    StatisticsDone = 1008,
    TimePoint = 1009,
    ImageProgress = 1100,
};

/// An event with one of the ids above.
template <EventId Id>
class AppEvent : public QEvent
{
public:
    static constexpr EventId kId = Id;
    AppEvent() : QEvent(static_cast<QEvent::Type>(Id)) {}
};

/// The angles of the frame drawn last, in degrees.
struct RotationEvent : AppEvent<EventId::Rotation>
{
    RotationEvent(double xAngle, double yAngle, double zAngle) : x(xAngle), y(yAngle), z(zAngle) {}
    double x;
    double y;
    double z;
};

/// How far a load has come; a total of -1 keeps the last total and adds the last base. `done` ends the
/// progress, with a warning box when there is a message.
struct ProgressEvent : AppEvent<EventId::Progress>
{
    ProgressEvent(QString text, int value, int totalSteps, bool isDone)
        : message(std::move(text)), progress(value), total(totalSteps), done(isDone)
    {}
    QString message;
    int progress;
    int total;
    bool done;
};

/// A stack is ready to be shown.
struct StackLoadedEvent : AppEvent<EventId::StackLoaded>
{
    explicit StackLoadedEvent(LoadedStack loaded) : stack(std::move(loaded)) {}
    LoadedStack stack;
};

/// `count` key frames stand in the list now.
struct KeyFrameEvent : AppEvent<EventId::KeyFrame>
{
    explicit KeyFrameEvent(int frames) : count(frames) {}
    int count;
};

struct StartEvent : AppEvent<EventId::Start>
{};

/// A job on the voxels of a stack has ended. The text says what went wrong, and is empty when nothing did or
/// the user cancelled.
struct ReencodeDoneEvent : AppEvent<EventId::ReencodeDone>
{
    explicit ReencodeDoneEvent(QString text = {}) : message(std::move(text)) {}
    QString message;
};

struct StatisticsDoneEvent : AppEvent<EventId::StatisticsDone>
{};

struct TimePointEvent : AppEvent<EventId::TimePoint>
{};

/// How far an image filter has come; counted by itself, without a base.
struct ImageProgressEvent : AppEvent<EventId::ImageProgress>
{
    ImageProgressEvent(QString text, int value, int totalSteps)
        : message(std::move(text)), progress(value), total(totalSteps)
    {}
    QString message;
    int progress;
    int total;
};

} // namespace tirn
