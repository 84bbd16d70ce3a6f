#include "render/renderlistcache.h"

#include <utility>

#include "base/log.h"
#include "gl/gltable.h"

namespace tirn {

namespace {

/// Lists of a time point.
constexpr int kOrientations = 6;

ListSource sourceOf(const FrameState& frame)
{
    return {
        frame.array->id(), frame.voxelRevision, frame.array->timePointCount(), frame.array->textureTarget(),
        frame.cut,         frame.channels,      frame.paletteHandles,          frame.curveHandles};
}

} // namespace

void RenderListCache::clear()
{
    m_renderLists.clear();
    m_currentRenderList = m_xyList = m_yzList = m_xzList = 0;
}

bool RenderListCache::rebuild(const FrameState& frame, bool force, const Builder& build)
{
    if (frame.array == nullptr) {
        clear();
        return false;
    }
    if (!frame.array->isComplete())
        return false;
    const Orientation orientation = orientationOf(frame.rotation);
    ListSource source = sourceOf(frame);
    const bool stale = force || source != m_source || m_renderLists.empty();
    if (!stale && orientation == m_orientation && frame.timePoint == m_timePoint &&
        frame.view.renderMode == m_renderMode && m_currentRenderList != 0 &&
        gl().IsList(m_currentRenderList) == GL_TRUE)
        return true;
    if (stale) {
        clear();
        m_renderLists.resize(static_cast<std::size_t>(source.timePoints) * kOrientations);
        m_source = std::move(source);
    }
    m_orientation = orientation;
    m_timePoint = frame.timePoint;
    m_renderMode = frame.view.renderMode;
    m_currentRenderList = slotList(frame, orientation, build);
    if (m_currentRenderList == 0) {
        logWarning("Render list is busted");
        return false;
    }
    if (frame.view.renderMode == RenderMode::FourViews) {
        m_xyList = slotList(frame, Orientation::XYForward, build);
        m_yzList = slotList(frame, Orientation::YZReverse, build);
        m_xzList = slotList(frame, Orientation::XZForward, build);
    }
    return true;
}

GLuint RenderListCache::slotList(const FrameState& frame, Orientation orientation, const Builder& build)
{
    const auto index =
        static_cast<std::size_t>(frame.timePoint * kOrientations + orientationSlot(orientation));
    if (index >= m_renderLists.size())
        return 0;
    ListNames& slot = m_renderLists[index];
    if (!slot.empty() && gl().IsList(slot.first()) == GL_TRUE)
        return slot.first();
    slot = build(orientation, renderListParameters(orientation, frame.array->geometry(), frame.cut));
    if (!slot.empty() && gl().IsList(slot.first()) == GL_FALSE)
        slot.clear();
    return slot.empty() ? 0 : slot.first();
}

} // namespace tirn
