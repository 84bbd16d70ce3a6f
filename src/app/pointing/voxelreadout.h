#pragma once

#include <functional>

#include <QSize>
#include <QTimer>

#include "scene/pointing/pointing.h"
#include "scene/scenemodel.h"

namespace tirn {

/// Tells what the picture shows under the mouse, once for all moves that come together.
class VoxelReadout : public QObject
{
    Q_OBJECT

public:
    /// `isBusy` while a job works on voxels, which nobody else may read then; `tell` gets the text, empty for
    /// none.
    VoxelReadout(SceneModel& model, std::function<bool()> isBusy, std::function<void(const QString&)> tell);

    /// What a place of a picture of `size` shows, in device pixels; nothing while a job is at work.
    std::optional<PointedVoxel> voxelAt(QPointF pixel, QSize size) const;

public Q_SLOTS:
    /// The mouse is there without a button.
    void follow(QPointF pixel, QSize size);
    /// The mouse has left, or drags.
    void clear();

private:
    void tellNow();

    SceneModel& m_model;
    std::function<bool()> m_isBusy;
    std::function<void(const QString&)> m_tell;
    QTimer m_timer;
    QPointF m_pixel;
    QSize m_size;
};

} // namespace tirn
