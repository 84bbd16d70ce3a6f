#include "app/pointing/rulertool.h"

namespace tirn {

RulerTool::RulerTool(SceneModel& model, const VoxelReadout& readout,
                     std::function<void(const QString&)> refuse)
    : m_model(model), m_readout(readout), m_refuse(std::move(refuse))
{
    connect(&model, &SceneModel::changed, this, &RulerTool::follow);
}

void RulerTool::setOn(bool on)
{
    m_model.edit(Change::Ruler, [on](Scene& scene) { scene.view.isMeasuring = on; });
    if (!on)
        m_model.editUndoably(tr("ruler"), 0, Change::Ruler, [](Scene& scene) { scene.view.ruler = {}; });
}

void RulerTool::click(QPointF pixel, QSize size)
{
    const std::optional<PointedVoxel> pointed = m_readout.voxelAt(pixel, size);
    if (!pointed) {
        m_refuse(tr("There is no voxel to measure from."));
        return;
    }
    const StackId stack = m_model.scene().currentId();
    const Ruler ruler = withEnd(m_model.scene().view.ruler, stack, pointed->voxel);
    if (ruler.ends.size() == 1)
        m_gesture = m_model.newGesture();
    m_model.editUndoably(tr("ruler"), m_gesture, Change::Ruler,
                         [&](Scene& scene) { scene.view.ruler = ruler; });
}

/// What was measured goes with its stack.
void RulerTool::follow(Changes changes)
{
    const Scene& scene = m_model.scene();
    const Ruler& ruler = scene.view.ruler;
    const bool isOrphan = !ruler.ends.empty() && scene.find(ruler.stack) == nullptr;
    if ((changes & Change::Stacks) && (isOrphan || (scene.view.isMeasuring && scene.current() == nullptr)))
        m_model.edit(Change::Ruler, [](Scene& shown) {
            shown.view.ruler = {};
            shown.view.isMeasuring = shown.view.isMeasuring && shown.current() != nullptr;
        });
}

} // namespace tirn
