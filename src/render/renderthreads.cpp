#include "render/renderthreads.h"

#include "base/log.h"
#include "render/nvidiathread.h"

namespace tirn {

namespace {

struct ThreadRow
{
    RenderThreadKind kind;
    const char* log;
    std::unique_ptr<GLThread> (*create)(const RenderHost&);
};

template <typename Thread>
std::unique_ptr<GLThread> createThread(const RenderHost& host)
{
    return std::make_unique<Thread>(host);
}

constexpr ThreadRow kThreads[] = {
    {RenderThreadKind::Paletted, "Using GLThread", &createThread<GLThread>},
    {RenderThreadKind::Nvidia, "Using NvidiaThread", &createThread<NvidiaThread>},
    {RenderThreadKind::FragmentProgram, "Using AtiThread", &createThread<NvidiaThread>},
    {RenderThreadKind::LostCause, "Using Lost Cause Thread", &createThread<LostCauseThread>},
};

} // namespace

RenderThreadKind chooseThreadKind(const GlCapabilities& card)
{
    if (card.hasFloatBuffer)
        return RenderThreadKind::Nvidia;
    if (card.hasPalettedTexture)
        return RenderThreadKind::Paletted;
    if (card.hasFragmentProgram)
        return RenderThreadKind::FragmentProgram;
    return RenderThreadKind::LostCause;
}

std::unique_ptr<GLThread> makeRenderThread(const RenderHost& host)
{
    const ThreadRow& row = kThreads[static_cast<std::size_t>(host.kind)];
    logDebug("%s", row.log);
    return row.create(host);
}

} // namespace tirn
