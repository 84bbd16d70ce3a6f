#include "app/pointing/voxelreadout.h"

namespace tirn {

VoxelReadout::VoxelReadout(SceneModel& model, std::function<bool()> isBusy,
                           std::function<void(const QString&)> tell)
    : m_model(model), m_isBusy(std::move(isBusy)), m_tell(std::move(tell))
{
    // Once the moves that wait have been taken in.
    m_timer.setSingleShot(true);
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &VoxelReadout::tellNow);
}

std::optional<PointedVoxel> VoxelReadout::voxelAt(QPointF pixel, QSize size) const
{
    if (m_isBusy())
        return std::nullopt;
    return m_model.read([&](const Scene& scene) { return pointAt(scene, pixel, size); });
}

void VoxelReadout::follow(QPointF pixel, QSize size)
{
    m_pixel = pixel;
    m_size = size;
    if (!m_timer.isActive())
        m_timer.start();
}

void VoxelReadout::clear()
{
    m_timer.stop();
    m_tell({});
}

void VoxelReadout::tellNow()
{
    const std::optional<PointedVoxel> pointed = voxelAt(m_pixel, m_size);
    const VoxelArray* array = m_model.scene().current();
    m_tell(pointed && array != nullptr ? pointedText(*array, *pointed) : QString());
}

} // namespace tirn
