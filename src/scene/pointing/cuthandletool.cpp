#include "scene/pointing/cuthandletool.h"

#include <QCoreApplication>

namespace tirn {

std::optional<CutDrag> CutHandleTool::dragAt(QPointF place, QSize size, double pixelRatio) const
{
    return m_model.read([&](const Scene& scene) -> std::optional<CutDrag> {
        const VoxelArray* array = scene.current();
        if (!scene.view.cutHandles.shown || array == nullptr || !showsVolume(scene.view.renderMode))
            return std::nullopt;
        const ViewProjection projection(scene.view, scene.drawnScale(), size);
        const auto face =
            handleAt(cutHandles(projection, array->geometry(), array->cut), place, kHandleReach * pixelRatio);
        if (!face)
            return std::nullopt;
        return beginCutDrag(projection, array->geometry(), array->cut, *face);
    });
}

bool CutHandleTool::isOver(QPointF place, QSize size, double pixelRatio) const
{
    return dragAt(place, size, pixelRatio).has_value();
}

bool CutHandleTool::press(QPointF place, QSize size, double pixelRatio)
{
    const std::optional<CutDrag> drag = dragAt(place, size, pixelRatio);
    if (!drag)
        return false;
    m_drag = *drag;
    m_from = place;
    m_stack = m_model.scene().currentId();
    m_gesture = m_model.newGesture();
    m_model.edit(Change::Look, [](Scene& scene) { scene.view.drawCutBox = true; });
    return true;
}

void CutHandleTool::move(QPointF place)
{
    // The stack may have been closed, or another one been shown.
    if (!isDragging() || m_model.scene().currentId() != m_stack)
        return;
    const auto axis = static_cast<std::size_t>(m_drag.face.axis);
    m_model.editUndoably(QCoreApplication::translate("tirn::CutHandleTool", "cut planes"), m_gesture,
                         Change::Cut, [&](Scene& scene) {
                             VoxelArray& array = *scene.current();
                             array.cut = draggedCut(m_drag, place - m_from, array.geometry(),
                                                    scene.view.cutHandles.leastSlices[axis]);
                         });
}

void CutHandleTool::release()
{
    if (!isDragging())
        return;
    m_gesture = 0;
    m_model.edit(Change::Look, [](Scene& scene) { scene.view.drawCutBox = false; });
}

} // namespace tirn
