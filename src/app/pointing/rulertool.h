#pragma once

#include "app/pointing/voxelreadout.h"

namespace tirn {

/// Measures between two voxels that are clicked in the picture, for as long as it is on.
class RulerTool : public QObject
{
    Q_OBJECT

public:
    /// `refuse` tells why nothing was measured.
    RulerTool(SceneModel& model, const VoxelReadout& readout, std::function<void(const QString&)> refuse);

public Q_SLOTS:
    /// Without the ruler what was measured goes, too.
    void setOn(bool on);
    /// A click at a place of a picture of `size`, in device pixels.
    void click(QPointF pixel, QSize size);

private:
    void follow(Changes changes);

    SceneModel& m_model;
    const VoxelReadout& m_readout;
    std::function<void(const QString&)> m_refuse;
    /// What both ends of a ruler have in common, so that they are taken back as one.
    int m_gesture = 0;
};

} // namespace tirn
