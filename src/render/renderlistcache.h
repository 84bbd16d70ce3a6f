#pragma once

#include <functional>
#include <vector>

#include "gl/glnames.h"
#include "scene/scene.h"
#include "volume/draworder.h"

namespace tirn {

/// All that the lists of a volume are made from; lists are stale when it differs.
struct ListSource
{
    StackId stack = StackId::None;
    std::int64_t voxelRevision = 0;
    int timePoints = 0;
    GLenum target = 0;
    CutBox cut;
    std::vector<ChannelDisplay> channels;
    std::vector<unsigned> paletteHandles;
    std::vector<std::vector<unsigned>> curveHandles;

    bool operator==(const ListSource&) const = default;
};

/// The display lists that draw a volume: one for each time point and orientation, built when first needed.
///
/// Used with the render thread's context current.
class RenderListCache
{
public:
    /// Builds a list; an empty result means that it failed.
    using Builder = std::function<ListNames(Orientation, const SliceWalk&)>;

    /// Makes the list of the frame's time point and view current. A change of what they are made from drops
    /// all lists, and so does `force`; a time step or a turn drops none. False when there is nothing to draw.
    /// An array that is not complete leaves the current list as it was; a list that could not be built leaves
    /// none, so that the next call tries again.
    bool rebuild(const FrameState& frame, bool force, const Builder& build);

    /// The list to call, 0 while there is none.
    GLuint currentRenderList() const { return m_currentRenderList; }
    /// The three flat views of the four-view mode: along z, x and y.
    GLuint xyList() const { return m_xyList; }
    GLuint yzList() const { return m_yzList; }
    GLuint xzList() const { return m_xzList; }

    /// One slot for each time point and orientation.
    std::size_t slots() const { return m_renderLists.size(); }
    GLuint slot(std::size_t index) const
    {
        return m_renderLists[index].empty() ? 0 : m_renderLists[index].first();
    }

    /// Deletes every list.
    void clear();

private:
    GLuint slotList(const FrameState& frame, Orientation orientation, const Builder& build);

    std::vector<ListNames> m_renderLists;
    GLuint m_currentRenderList = 0;
    GLuint m_xyList = 0;
    GLuint m_yzList = 0;
    GLuint m_xzList = 0;
    ListSource m_source;
    Orientation m_orientation = Orientation::Current;
    int m_timePoint = -1;
    RenderMode m_renderMode = RenderMode::Normal;
};

} // namespace tirn
