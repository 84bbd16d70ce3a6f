// The drawing of one frame.

#include <algorithm>

#include "base/log.h"
#include "gl/glstate.h"
#include "render/glthread.h"

namespace tirn {

namespace {

constexpr GLfloat kEmission[] = {1, 1, 1, 1};

void setColorMask(const ColorMask& mask)
{
    const auto value = [](bool on) { return static_cast<GLboolean>(on ? GL_TRUE : GL_FALSE); };
    gl().ColorMask(value(mask.red), value(mask.green), value(mask.blue), value(mask.alpha));
}

/// Cuts the axes across the slices while it lives.
class ClipScope
{
public:
    ClipScope(const FrameState& frame, Orientation orientation)
        : m_planes(clipPlanes(orientation, frame.array->geometry(), frame.cut))
    {
        for (GLenum i = 0; i < m_planes.size(); ++i) {
            if (m_planes[i].enabled) {
                gl().Enable(GL_CLIP_PLANE0 + i);
                gl().ClipPlane(GL_CLIP_PLANE0 + i, m_planes[i].equation.data());
            }
        }
    }
    ~ClipScope()
    {
        for (GLenum i = 0; i < m_planes.size(); ++i)
            gl().Disable(GL_CLIP_PLANE0 + i);
    }
    ClipScope(const ClipScope&) = delete;
    ClipScope& operator=(const ClipScope&) = delete;

private:
    std::array<ClipPlane, 6> m_planes;
};

} // namespace

void GLThread::initializeGL()
{
    gl().Clear(GL_COLOR_BUFFER_BIT);
    gl().Disable(GL_LIGHTING);
    gl().Enable(GL_DEPTH_TEST);
    gl().DepthFunc(GL_ALWAYS);
    gl().Materialfv(GL_FRONT_AND_BACK, GL_EMISSION, kEmission);
    gl().Enable(GL_BLEND);
    gl().BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    gl().Enable(GL_ALPHA_TEST);
    gl().AlphaFunc(GL_GREATER, 0);
    gl().PixelStorei(GL_UNPACK_ALIGNMENT, 1);
    gl().MatrixMode(GL_MODELVIEW);
    gl().LoadIdentity();
}

void GLThread::enableColourPath() { gl().Enable(GL_SHARED_TEXTURE_PALETTE_EXT); }

void GLThread::finishFrame() { gl().Finish(); }

bool GLThread::prepareProgram(const FrameState& /*frame*/) { return true; }

bool GLThread::drawMessageOnly(const FrameState& /*frame*/, QSize /*size*/) { return false; }

void GLThread::bindSlice(GLenum target, GLuint texture) { gl().BindTexture(target, texture); }

void GLThread::bindChannelTables(const FrameState& frame, std::size_t channel, int /*zBlock*/)
{
    if (const GLuint palette = frame.paletteHandles[channel])
        gl().CallList(palette);
}

void GLThread::unbindChannelTables() {}

ListNames GLThread::buildRenderList(const FrameState& frame, Orientation orientation, const SliceWalk& walk)
{
    const VoxelArray& array = *frame.array;
    const bool is3D = array.textureTarget() == GL_TEXTURE_3D;
    const std::int64_t perChannel = array.texturesPerChannel();
    const std::int64_t timeBase = frame.timePoint * perChannel * array.channelCount();
    ListNames list(1);
    if (list.empty())
        return list;
    const ListScope recording(list.first());
    for (int i = walk.first; walk.perSlice > 0 && i != walk.last + walk.step; i += walk.step) {
        for (std::size_t c = 0; c < frame.channels.size(); ++c) {
            if (isHidden(frame.channels[c].state))
                continue;
            const std::int64_t channelBase = timeBase + static_cast<std::int64_t>(c) * perChannel;
            for (int b = 0; b < walk.perSlice; ++b) {
                const std::int64_t quad = std::int64_t{walk.perSlice} * i + walk.base + b;
                const std::int64_t own = is3D ? brickOf(orientation, array.geometry(), i, b) : quad;
                const std::int64_t texture = channelBase + own;
                // Where sizes do not split evenly an index may leave the channel's own blocks: nothing is
                // drawn.
                if (own < 0 || own >= perChannel ||
                    texture >= static_cast<std::int64_t>(array.textures().size())) {
                    if (!is3D)
                        logDebug("Impossible offset %lld size %lld", static_cast<long long>(texture),
                                 static_cast<long long>(array.textures().size()));
                    continue;
                }
                if (quad < 0 || quad >= static_cast<std::int64_t>(array.quads().size())) {
                    logWarning("invalid texmap %lld", static_cast<long long>(quad));
                    continue;
                }
                bindSlice(array.textureTarget(), array.textures()[static_cast<std::size_t>(texture)]);
                bindChannelTables(frame, c, is3D ? array.geometry().zBlockOf(static_cast<int>(own)) : 0);
                gl().CallList(array.quads()[static_cast<std::size_t>(quad)]);
            }
        }
    }
    unbindChannelTables();
    bindSlice(array.textureTarget(), 0);
    return list;
}

PartViewport partViewport(const SquareViewport& square, const PicturePart& picture)
{
    const QRect& part = picture.part;
    const QRect whole(square.x, square.y, square.side, square.side);
    const QRect shown = whole & part;
    if (shown == whole || square.side <= picture.largestViewport)
        return {whole.translated(-part.topLeft())};
    PartViewport viewport;
    viewport.whole = false;
    if (shown.isEmpty()) {
        // All is moved to one place outside of what is shown.
        viewport.pixels = {0, 0, 1, 1};
        viewport.spread[12] = 2;
        viewport.spread[15] = 1;
        return viewport;
    }
    const auto spread = [&](std::size_t axis, int from, int size, int wholeFrom) {
        viewport.spread[5 * axis] = static_cast<double>(square.side) / size;
        viewport.spread[12 + axis] = (square.side - 2.0 * (from - wholeFrom) - size) / size;
    };
    viewport.pixels = shown.translated(-part.topLeft());
    spread(0, shown.x(), shown.width(), square.x);
    spread(1, shown.y(), shown.height(), square.y);
    viewport.spread[10] = viewport.spread[15] = 1;
    return viewport;
}

void GLThread::setOrtho(const OrthoBounds& bounds)
{
    const PartViewport viewport = partViewport(squareViewport(m_part.whole), m_part);
    gl().MatrixMode(GL_PROJECTION);
    gl().LoadIdentity();
    if (!viewport.whole)
        gl().MultMatrixd(viewport.spread.data());
    gl().Ortho(bounds.left, bounds.right, bounds.bottom, bounds.top, bounds.zNear, bounds.zFar);
    gl().MatrixMode(GL_MODELVIEW);
    gl().LoadIdentity();
}

void GLThread::setupProjection(const FrameState& frame, QSize size)
{
    const PartViewport viewport = partViewport(squareViewport(size), m_part);
    gl().Viewport(viewport.pixels.x(), viewport.pixels.y(), viewport.pixels.width(),
                  viewport.pixels.height());
    gl().MatrixMode(GL_PROJECTION);
    if (!isStereo(frame.view.renderMode)) {
        setOrtho(widenedBounds(frame.view, frame.scale));
        return;
    }
    const std::array<double, 16> perspective = perspectiveMatrix(kStereoAngle, 1, kStereoNear, kStereoFar);
    if (viewport.whole) {
        gl().LoadMatrixd(perspective.data());
    } else {
        gl().LoadMatrixd(viewport.spread.data());
        gl().MultMatrixd(perspective.data());
    }
    gl().MatrixMode(GL_MODELVIEW);
    gl().LoadIdentity();
}

/// For what stands flat on top of the picture: the stored bounds, seen straight on.
void GLThread::setupOverlay(const FrameState& frame) { setOrtho(frame.view.ortho); }

void GLThread::applyView(const FrameState& frame)
{
    gl().MultMatrixf(frame.rotation.data());
    gl().Translated(frame.view.transX, frame.view.transY, frame.view.transZ);
    gl().Scaled(frame.scale.x, frame.scale.y, frame.scale.z);
    if (frame.view.yRotation != 0)
        gl().Rotated(frame.view.yRotation, 0, 1, 0);
}

void GLThread::drawVolume(const FrameState& frame, Orientation orientation, GLuint list)
{
    // The list of an array that is not complete would be that of the array before.
    if (list == 0 || !frame.array->isComplete())
        return;
    const ClipScope clipped(frame, orientation);
    gl().CallList(list);
}

void GLThread::drawFrame(const FrameState& frame, QSize size)
{
    const auto builder = [&](Orientation orientation, const SliceWalk& walk) {
        return buildRenderList(frame, orientation, walk);
    };
    if (!prepareWithoutLists(frame))
        m_lists.rebuild(frame, forceRebuild.exchange(false), builder);
    if (frame.array != nullptr)
        m_textureTarget = frame.array->textureTarget();
    setupProjection(frame, size);
    enableTexturing();
    {
        const MatrixScope saved;
        switch (frame.view.renderMode) {
        case RenderMode::Normal:
            drawNormal(frame);
            break;
        case RenderMode::Anaglyph:
            drawAnaglyph(frame);
            break;
        case RenderMode::FullscreenStereo:
            drawFullscreenStereo(frame, size);
            break;
        case RenderMode::Stereo:
            disableTexturing();
            setupOverlay(frame);
            drawTextAt({"Stereo in a window not ready yet!", 16, true, Qt::white}, frame, -0.5, 0, size);
            enableTexturing();
            break;
        case RenderMode::FourViews:
            drawFourViews(frame);
            break;
        }
    }
    drawOverlays(frame, size);
}

void GLThread::drawNormal(const FrameState& frame)
{
    // Slices are drawn in order and pass whatever the depth: writing depths would only cost time.
    gl().Enable(GL_DEPTH_TEST);
    gl().DepthFunc(GL_ALWAYS);
    gl().DepthMask(GL_FALSE);
    {
        const MatrixScope saved;
        applyView(frame);
        if (frame.view.showBoundingBox)
            drawBoundingBox(frame);
        drawVolume(frame, orientationOf(frame.rotation), m_lists.currentRenderList());
        if (frame.view.showBoundingBox)
            drawBoxFront(frame);
        if (frame.view.drawCutBox)
            drawCutBox(frame);
        drawRuler(frame);
    }
    gl().DepthMask(GL_TRUE);
    drawSegmentation(frame);
}

/// The scene for one eye. Channels of one slice lie in one plane: each must pass where the one before it has
/// drawn.
void GLThread::drawEye(const FrameState& frame, const Vector3& eye, const Vector3& focus)
{
    gl().Enable(GL_DEPTH_TEST);
    gl().DepthFunc(GL_LEQUAL);
    gl().Clear(GL_DEPTH_BUFFER_BIT);
    gl().MatrixMode(GL_MODELVIEW);
    gl().LoadMatrixd(lookAtMatrix(eye, focus, frame.view.camera.vup).data());
    {
        const MatrixScope saved;
        applyView(frame);
        if (frame.view.showBoundingBox)
            drawBoundingBox(frame);
        drawVolume(frame, orientationOf(frame.rotation), m_lists.currentRenderList());
        if (frame.view.drawCutBox)
            drawCutBox(frame);
        drawRuler(frame);
    }
    drawSegmentation(frame);
}

void GLThread::drawAnaglyph(const FrameState& frame)
{
    const auto pair = static_cast<std::size_t>(std::clamp(frame.view.filterColors, 0, 5));
    const EyeSetup eyes = eyeSetup(frame.view.camera);
    setColorMask(kFilterColors[pair].left);
    drawEye(frame, frame.view.camera.vpos - eyes.right, eyes.focus);
    setColorMask(kFilterColors[pair].right);
    drawEye(frame, frame.view.camera.vpos + eyes.right, eyes.focus);
    setColorMask({});
    gl().Disable(GL_DEPTH_TEST);
}

void GLThread::drawFullscreenStereo(const FrameState& frame, QSize size)
{
    disableTexturing();
    setupOverlay(frame);
    drawTextAt({"Full screen stereo not ready yet!", 16, true, Qt::white}, frame, -0.5, 0, size);
    enableTexturing();
}

void GLThread::drawFlatView(const FrameState& frame, Orientation orientation, GLuint list)
{
    drawVolume(frame, orientation, list);
}

void GLThread::drawFourViews(const FrameState& frame)
{
    const GLuint lists[] = {m_lists.xyList(), m_lists.xzList(), m_lists.yzList()};
    for (std::size_t i = 0; i < kFlatViews.size(); ++i) {
        const FlatView& view = kFlatViews[i];
        gl().LoadIdentity();
        gl().Translated(view.x, view.y, 0);
        if (view.angle != 0)
            gl().Rotated(view.angle, view.axisX, view.axisY, 0);
        drawFlatView(frame, view.orientation, lists[i]);
    }
    gl().LoadIdentity();
    gl().Translated(kSolidViewX, kSolidViewY, 0);
    gl().Scaled(kSolidViewScale, kSolidViewScale, kSolidViewScale);
    drawNormal(frame);
}

void GLThread::drawSegmentation(const FrameState& frame)
{
    // A hidden surface may come back, one that is closed does not.
    if (m_host.scene.segmentations.empty())
        m_meshList.clear();
    const Segmentation* mesh = frame.segmentation;
    if (mesh == nullptr)
        return;
    const GLuint list = m_meshList.of(*mesh);
    if (list == 0)
        return;
    disableTexturing();
    {
        const MatrixScope saved;
        const EnabledScope lighting(GL_LIGHTING);
        const EnabledScope depthTest(GL_DEPTH_TEST);
        gl().DepthFunc(GL_LEQUAL);
        gl().DepthMask(GL_TRUE);
        gl().Clear(GL_DEPTH_BUFFER_BIT);
        gl().ShadeModel(GL_SMOOTH);
        frame.light->apply();
        applyView(frame);
        applyMaterial(mesh->material);
        gl().CallList(list);
    }
    // What is drawn next has the plain material again.
    gl().Materialfv(GL_FRONT_AND_BACK, GL_EMISSION, kEmission);
    enableTexturing();
}

void GLThread::clearLists()
{
    m_lists.clear();
    m_meshList.clear();
}

void GLThread::disableTexturing()
{
    gl().Disable(GL_TEXTURE_2D);
    gl().Disable(GL_TEXTURE_3D);
}

void GLThread::enableTexturing() { gl().Enable(m_textureTarget); }

} // namespace tirn
