#include "glsupport/recordedrig.h"

#include "render/nvidiathread.h"

namespace tirn::test {

RecordedRig::RecordedRig(RenderThreadKind kind, QSize size)
    : m_kind(kind), m_shaders(std::make_unique<Shaders>()), m_tables(kind, nullptr), m_surface(size)
{
    m_thread = makeRenderThread({scene, *m_shaders, renderLock, m_surface, events, kind});
}

RecordedRig::~RecordedRig()
{
    m_thread.reset();
    scene.arrays.clear();
    scene.palettes.clear();
    m_shaders.reset();
}

VoxelArray& RecordedRig::show(const std::vector<PlainStack>& timePoints, VolumeSpec spec)
{
    spec.kind = m_kind;
    spec.curves = &m_curves;
    scene.arrays.push_back(makeVolume(timePoints, spec));
    scene.currentIndex = static_cast<int>(scene.arrays.size()) - 1;
    return *scene.arrays.back();
}

void RecordedRig::makePalettes(int count, int depth)
{
    for (int i = 0; i < count; ++i)
        scene.palettes.push_back(std::make_unique<Palette>("palette", depth, &m_tables));
    for (std::size_t c = 0; c < scene.current()->channels().size(); ++c)
        scene.current()->channels()[c].display.palette = static_cast<int>(c);
}

std::vector<std::string> RecordedRig::draw(const std::vector<std::string>& names)
{
    gl.clear();
    m_thread->drawNextFrame(m_surface.size());
    return gl.texts(names);
}

std::vector<std::string> RecordedRig::build(Orientation orientation)
{
    const FrameState state = frame();
    gl.clear();
    const ListNames list = m_thread->buildRenderList(
        state, orientation, renderListParameters(orientation, state.array->geometry(), state.cut));
    return gl.texts();
}

} // namespace tirn::test
