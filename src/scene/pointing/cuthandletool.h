#pragma once

#include "scene/pointing/cuthandles.h"
#include "scene/scenemodel.h"

namespace tirn {

/// The mouse on the handles of the cut box. Places are in device pixels of a picture of `size`.
class CutHandleTool
{
public:
    explicit CutHandleTool(SceneModel& model) : m_model(model) {}

    /// Whether there is a handle to catch.
    bool isOver(QPointF place, QSize size, double pixelRatio) const;
    /// Catches a handle; false where there is none.
    bool press(QPointF place, QSize size, double pixelRatio);
    /// Cuts at once; all of a drag is taken back as one.
    void move(QPointF place);
    void release();
    bool isDragging() const { return m_gesture != 0; }

private:
    std::optional<CutDrag> dragAt(QPointF place, QSize size, double pixelRatio) const;

    SceneModel& m_model;
    CutDrag m_drag;
    QPointF m_from;
    StackId m_stack = StackId::None;
    int m_gesture = 0;
};

} // namespace tirn
