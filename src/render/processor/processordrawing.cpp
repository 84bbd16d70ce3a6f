#include "render/processor/processordrawing.h"

#include <algorithm>
#include <cstring>

#include "base/checkedsize.h"
#include "gl/glstate.h"
#include "raster/compositing.h"
#include "volume/slicelayout.h"

namespace tirn {

namespace {

BufferView viewOf(QSize buffer)
{
    BufferView view;
    gl().GetDoublev(GL_MODELVIEW_MATRIX, view.modelView.data());
    gl().GetDoublev(GL_PROJECTION_MATRIX, view.projection.data());
    gl().GetIntegerv(GL_VIEWPORT, view.viewport.data());
    view.width = buffer.width();
    view.height = buffer.height();
    return view;
}

/// What stretches the samples of a volume, as its fragment program would.
double stretchOf(const FrameState& frame)
{
    const int bits = frame.array->bitsPerSample();
    if (bits <= 8)
        return 1;
    if (frame.view.autoBitDepth)
        return 1 << std::max(0, 16 - frame.array->significantBits());
    return bits <= 12 ? 16 : 1;
}

bool usesCurves(const FrameState& frame)
{
    return frame.view.zCorrection && frame.array->textureTarget() == GL_TEXTURE_3D;
}

/// The axes whose slices a frame shows.
std::vector<int> shownAxes(const FrameState& frame)
{
    if (frame.view.renderMode == RenderMode::FourViews)
        return {0, 1, 2};
    return {slicingAxis(orientationOf(frame.rotation))};
}

/// Draws in pixels of the buffer from the lower left, whatever comes before, while it lives.
class PixelScope
{
public:
    explicit PixelScope(const BufferView& view) : m_viewport(view.viewport)
    {
        gl().GetBooleanv(GL_DEPTH_TEST, &m_depthTest);
        gl().Disable(GL_DEPTH_TEST);
        gl().Viewport(0, 0, view.width, view.height);
        for (const GLenum matrix : {GL_PROJECTION, GL_MODELVIEW}) {
            gl().MatrixMode(matrix);
            gl().PushMatrix();
            gl().LoadIdentity();
        }
    }
    ~PixelScope()
    {
        for (const GLenum matrix : {GL_PROJECTION, GL_MODELVIEW}) {
            gl().MatrixMode(matrix);
            gl().PopMatrix();
        }
        gl().Viewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
        if (m_depthTest == GL_TRUE)
            gl().Enable(GL_DEPTH_TEST);
    }
    PixelScope(const PixelScope&) = delete;
    PixelScope& operator=(const PixelScope&) = delete;

private:
    std::array<GLint, 4> m_viewport;
    GLboolean m_depthTest = GL_FALSE;
};

} // namespace

bool isSoftwareRenderer(const char* renderer)
{
    constexpr const char* names[] = {"llvmpipe", "softpipe", "SWR", "Software Rasterizer"};
    return renderer != nullptr &&
           std::any_of(std::begin(names), std::end(names),
                       [renderer](const char* name) { return std::strstr(renderer, name) != nullptr; });
}

bool ProcessorDrawing::isSoftwareCard()
{
    if (m_card == Card::Unknown) {
        const auto* renderer = reinterpret_cast<const char*>(gl().GetString(GL_RENDERER));
        m_card = isSoftwareRenderer(renderer) ? Card::Software : Card::Hardware;
    }
    return m_card == Card::Software;
}

bool ProcessorDrawing::isWanted(const FrameState& frame)
{
    if (frame.drawing == Drawing::Card || frame.array == nullptr || !frame.array->isComplete() ||
        !frame.view.programText.empty())
        return false;
    if (frame.drawing == Drawing::Automatic && !isSoftwareCard())
        return false;
    // There lines and slices hide each other by their depth.
    const bool hasLines = frame.view.showBoundingBox || frame.view.drawCutBox;
    return !isStereo(frame.view.renderMode) || !hasLines;
}

bool ProcessorDrawing::prepare(const FrameState& frame, const Scene& scene)
{
    m_shown.clear();
    for (auto& slices : m_slices)
        slices.clear();
    std::vector<StackId> stacks;
    for (const auto& array : scene.arrays)
        stacks.push_back(array->id());
    m_store.keepOnly(stacks);
    m_isDrawing = isWanted(frame) && makeSlices(frame);
    return m_isDrawing;
}

bool ProcessorDrawing::makeSlices(const FrameState& frame)
{
    for (std::size_t c = 0; c < frame.channels.size(); ++c) {
        // A channel without a palette has no colours.
        if (!isHidden(frame.channels[c].state) && frame.paletteBytes[c] != nullptr)
            m_shown.push_back(c);
    }
    const auto curveLength = static_cast<std::size_t>(frame.array->geometry().powZ);
    for (const std::size_t c : m_shown) {
        if (usesCurves(frame) && frame.curves[c].size() != curveLength)
            return false;
        for (const int axis : shownAxes(frame)) {
            SliceStore::Slices slices =
                m_store.slices(*frame.array, static_cast<int>(c), frame.timePoint, axis);
            if (slices == nullptr)
                return false;
            m_slices[static_cast<std::size_t>(axis)].push_back(std::move(slices));
        }
    }
    return true;
}

void ProcessorDrawing::draw(const FrameState& frame, Orientation orientation, QSize buffer, bool transparent)
{
    const auto axis = static_cast<std::size_t>(slicingAxis(orientation));
    if (m_slices[axis].size() != m_shown.size())
        return;
    const BufferView view = viewOf(buffer);
    RasterFrame raster = layoutSlices(frame.array->geometry(), frame.array->textureTarget() == GL_TEXTURE_3D,
                                      orientation, frame.cut, view);
    raster.blend = frame.view.blendMode == GL_MAX ? RasterBlend::Maximum : RasterBlend::Alpha;
    std::vector<ColourLookup> lookups;
    lookups.reserve(m_shown.size());
    for (std::size_t i = 0; i < m_shown.size(); ++i) {
        const std::size_t c = m_shown[i];
        lookups.emplace_back(*frame.paletteBytes[c]);
        RasterChannel channel;
        channel.slices = m_slices[axis][i].get();
        channel.colours = &lookups.back();
        channel.unit = frame.array->bitsPerSample() > 8 ? 1.0 / 65535 : 1.0 / 255;
        channel.stretch = stretchOf(frame);
        if (usesCurves(frame)) {
            channel.curve = frame.curves[c];
            // Curves are kept in quarters.
            channel.curveFactor = 4;
        }
        raster.channels.push_back(channel);
    }
    m_layer = composite(raster, std::move(m_layer));
    if (m_layer.isEmpty())
        return;
    if (raster.blend == RasterBlend::Alpha)
        gl().BlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    upload();
    blend(view);
    if (transparent)
        gl().BlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    else
        gl().BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

/// Into the texture's lower left corner; its sides are powers of two, which every card takes.
void ProcessorDrawing::upload()
{
    gl().ActiveTextureARB(GL_TEXTURE0_ARB);
    const QSize size(next2(m_layer.width), next2(m_layer.height));
    if (m_texture.empty() || m_textureSize != size) {
        m_texture.clear();
        gl().BindTexture(GL_TEXTURE_2D, m_texture.add());
        m_textureSize = size;
        for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
            gl().TexParameteri(GL_TEXTURE_2D, filter, GL_NEAREST);
        gl().TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA16, size.width(), size.height(), 0, GL_RGBA,
                        GL_UNSIGNED_SHORT, nullptr);
    } else {
        gl().BindTexture(GL_TEXTURE_2D, m_texture[0]);
    }
    gl().TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, m_layer.width, m_layer.height, GL_RGBA, GL_UNSIGNED_SHORT,
                       m_layer.rgba.data());
}

void ProcessorDrawing::blend(const BufferView& view)
{
    const PixelScope pixels(view);
    const EnabledScope texturing(GL_TEXTURE_2D);
    const auto corner = [&](int right, int top) {
        const int column = right * m_layer.width;
        const int row = top * m_layer.height;
        const auto share = [](int part, int whole) {
            return static_cast<GLfloat>(part) / static_cast<GLfloat>(whole);
        };
        gl().TexCoord2f(share(column, m_textureSize.width()), share(row, m_textureSize.height()));
        gl().Vertex3f(2 * share(view.viewport[0] + m_layer.x + column, view.width) - 1,
                      2 * share(view.viewport[1] + m_layer.y + row, view.height) - 1, 0);
    };
    gl().Color4f(1, 1, 1, 1);
    {
        const PrimitiveScope quad(GL_QUADS);
        corner(0, 0);
        corner(1, 0);
        corner(1, 1);
        corner(0, 1);
    }
    gl().BindTexture(GL_TEXTURE_2D, 0);
}

void ProcessorDrawing::clear()
{
    m_store.clear();
    m_layer = {};
    for (auto& slices : m_slices)
        slices.clear();
    m_texture.clear();
}

} // namespace tirn
