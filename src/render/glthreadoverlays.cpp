// What stands over the volume: boxes, labels and the scale bar.

#include <algorithm>
#include <cmath>

#include "gl/glstate.h"
#include "render/glthread.h"
#include "scene/pointing/cuthandles.h"
#include "scene/scalebar.h"

namespace tirn {

namespace {

/// Half the side of the mark at an end of the ruler, and from its middle to its label, in pixels of a plain
/// window.
constexpr double kRulerEndHalf = 2.5;
constexpr double kRulerLabelGap = 6;
/// Before everything that the plain projection shows.
constexpr double kNearest = 1.9;

void setColor(const QColor& color)
{
    gl().Color4f(static_cast<GLfloat>(color.redF()), static_cast<GLfloat>(color.greenF()),
                 static_cast<GLfloat>(color.blueF()), 1);
}

void vertex(double x, double y, double z)
{
    gl().Vertex3f(static_cast<GLfloat>(x), static_cast<GLfloat>(y), static_cast<GLfloat>(z));
}

/// The edges of a box between two corners.
void boxEdges(const Vector3& low, const Vector3& high)
{
    const PrimitiveScope lines(GL_LINES);
    for (const double a : {0.0, 1.0}) {
        for (const double b : {0.0, 1.0}) {
            const auto mix = [](double from, double to, double t) { return from + (to - from) * t; };
            vertex(low.x, mix(low.y, high.y, a), mix(low.z, high.z, b));
            vertex(high.x, mix(low.y, high.y, a), mix(low.z, high.z, b));
            vertex(mix(low.x, high.x, a), low.y, mix(low.z, high.z, b));
            vertex(mix(low.x, high.x, a), high.y, mix(low.z, high.z, b));
            vertex(mix(low.x, high.x, a), mix(low.y, high.y, b), low.z);
            vertex(mix(low.x, high.x, a), mix(low.y, high.y, b), high.z);
        }
    }
}

} // namespace

QString frameRateText(double seconds)
{
    return seconds > 0 ? QString::asprintf("%-6.1ffps", 1 / seconds) : QString("Ludicrous speed GO!");
}

void GLThread::drawTextInWindow(const TextLine& line, int x, int y, QSize size)
{
    const double ratio = m_part.overlayScale;
    m_text.draw(line, static_cast<int>(x * ratio) - m_part.part.x(),
                static_cast<int>(size.height() - y * ratio) - m_part.part.y());
}

void GLThread::drawTextAt(const TextLine& line, const FrameState& frame, double x, double y, QSize size)
{
    const SquareViewport square = squareViewport(size);
    const OrthoBounds& bounds = frame.view.ortho;
    const auto place = [&](double at, double low, double high) {
        return static_cast<int>((at - low) / (high - low) * square.side);
    };
    m_text.draw(line, square.x - m_part.part.x() + place(x, bounds.left, bounds.right),
                square.y - m_part.part.y() + place(y, bounds.bottom, bounds.top));
}

void GLThread::drawNoStack(const FrameState& frame, QSize size)
{
    disableTexturing();
    setupOverlay(frame);
    if (frame.batchMode) {
        drawTextAt({"Making batch mode movie.", 16, true, Qt::white}, frame, -0.4, 0, size);
        drawTextAt({"Please be patient.", 16, true, Qt::white}, frame, -0.3, -0.1, size);
        return;
    }
    drawTextAt({"No stack loaded", 16, true, Qt::white}, frame, -0.3, 0, size);
}

void GLThread::drawOverlays(const FrameState& frame, QSize size)
{
    disableTexturing();
    if (gl().BlendEquationEXT != nullptr)
        gl().BlendEquationEXT(GL_FUNC_ADD);
    setupOverlay(frame);
    if (frame.view.showFrameRate)
        drawFrameRate(size);
    if (frame.view.drawOrientation)
        drawOrientationLabel(frame, size);
    if (frame.view.drawChannelTime)
        drawTimeLabel(frame, size);
    if (frame.view.showScaleBar)
        drawScaleBar(frame, size);
    if (frame.view.drawFileLabel)
        drawFileLabel(frame, size);
    drawRulerLabel(frame, size);
    if (m_part.hasHandles && showsVolume(frame.view.renderMode))
        drawCutHandles(frame, size);
    if (gl().BlendEquationEXT != nullptr)
        gl().BlendEquationEXT(frame.view.blendMode);
    enableTexturing();
}

void GLThread::showAsSeen(const FrameState& frame, QSize size)
{
    const ColorVision vision = frame.view.colorVision;
    // The two buffers of a stereo window cannot be read as one.
    const bool isPair = frame.view.renderMode == RenderMode::FullscreenStereo;
    if (vision == ColorVision::Normal || isPair || size.isEmpty())
        return;
    // Whoever reads tiles has set how long their rows are.
    GLint rowLength = 0;
    gl().GetIntegerv(GL_PACK_ROW_LENGTH, &rowLength);
    gl().PixelStorei(GL_PACK_ROW_LENGTH, 0);
    std::vector<std::uint8_t> pixels(std::size_t{4} * static_cast<std::size_t>(size.width()) *
                                     static_cast<std::size_t>(size.height()));
    gl().ReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    gl().PixelStorei(GL_PACK_ROW_LENGTH, rowLength);
    seeAs(vision, pixels, m_part.transparent);
    disableTexturing();
    for (const GLenum each : {GL_BLEND, GL_ALPHA_TEST, GL_DEPTH_TEST})
        gl().Disable(each);
    gl().WindowPos2i(0, 0);
    gl().DrawPixels(size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    for (const GLenum each : {GL_BLEND, GL_ALPHA_TEST, GL_DEPTH_TEST})
        gl().Enable(each);
    enableTexturing();
}

void GLThread::drawFrameRate(QSize size)
{
    gl().Finish();
    const QString text = frameRateText(m_frameClock.restart());
    drawTextInWindow({text, 12, false, Qt::white}, 10,
                     static_cast<int>(size.height() / m_part.overlayScale) - 10, size);
}

void GLThread::drawOrientationLabel(const FrameState& frame, QSize size)
{
    const double ratio = m_part.overlayScale;
    drawTextInWindow({orientationName(orientationOf(frame.rotation)), 10, false, Qt::white},
                     static_cast<int>(size.width() / ratio) - 100,
                     static_cast<int>(size.height() / ratio) - 10, size);
}

void GLThread::drawTimeLabel(const FrameState& frame, QSize size)
{
    const double ratio = m_part.overlayScale;
    const int width = static_cast<int>(size.width() / ratio);
    const int x = std::max(10, width - (static_cast<int>(frame.timeLabel.size()) * 11 + 10));
    drawTextInWindow({frame.timeLabel, 16, true, Qt::white}, x, static_cast<int>(size.height() / ratio) - 10,
                     size);
}

void GLThread::drawFileLabel(const FrameState& frame, QSize size)
{
    const double ratio = m_part.overlayScale;
    const int width = static_cast<int>(size.width() / ratio);
    const int x = std::max(10, width / 2 - static_cast<int>(frame.watermark.size()) * 7 / 2);
    drawTextInWindow({frame.watermark, 12, true, Qt::white}, x, static_cast<int>(size.height() / ratio) - 5,
                     size);
}

void GLThread::drawScaleBar(const FrameState& frame, QSize size)
{
    const ViewState& view = frame.view;
    const bool fourViews = view.renderMode == RenderMode::FourViews;
    const bool right = view.scaleBarLocation == ScaleBarLocation::TopRight ||
                       view.scaleBarLocation == ScaleBarLocation::BottomRight;
    const bool top = view.scaleBarLocation == ScaleBarLocation::TopLeft ||
                     view.scaleBarLocation == ScaleBarLocation::TopRight;
    const ScaleBar bar =
        scaleBarOf(view, frame.array->geometry().maxPow(), frame.array->stack().dimX, frame.scale.x);
    double x = right ? 0.9 - bar.size : -0.8;
    double y = top ? 0.9 : -0.8;
    if (fourViews) {
        x *= 2;
        y *= 2;
    }
    const int points = fourViews ? 6 : 12;
    if (!bar.label.known) {
        drawTextAt({bar.label.text, points, true, view.scaleBarColor}, frame, x, y, size);
        return;
    }
    setColor(view.scaleBarColor);
    gl().LineWidth(static_cast<GLfloat>(std::max(1.0, m_part.overlayScale)));
    const double z = view.ortho.zNear + 0.1;
    {
        const PrimitiveScope strip(GL_LINE_STRIP);
        vertex(x, y + 0.02, z);
        vertex(x, y, z);
        vertex(x + bar.size, y, z);
        vertex(x + bar.size, y + 0.02, z);
    }
    gl().LineWidth(1);
    drawTextAt({bar.label.text, points, true, view.scaleBarColor}, frame, x + 0.03, y + 0.01, size);
}

void GLThread::drawMark(const Vector3& at, double half, const QColor& color, QSize size)
{
    const double reach = half * m_part.overlayScale * 2 / squareViewport(size).side;
    setColor(color);
    const PrimitiveScope quad(GL_QUADS);
    vertex(at.x - reach, at.y - reach, kNearest);
    vertex(at.x + reach, at.y - reach, kNearest);
    vertex(at.x + reach, at.y + reach, kNearest);
    vertex(at.x - reach, at.y + reach, kNearest);
}

/// Squares with a dark rim, so that they show on any picture; those behind are darker.
void GLThread::drawCutHandles(const FrameState& frame, QSize size)
{
    const ViewProjection projection(frame.view, frame.scale, size);
    const QColor& color = frame.view.cutBoxColor;
    setOrtho({});
    for (const CutHandle& handle : cutHandles(projection, frame.array->geometry(), frame.cut)) {
        const Vector3 at = projection.normalised(handle.centre);
        drawMark(at, kHandleHalf, Qt::black, size);
        drawMark(at, kHandleHalf - 1, handle.isInFront ? color : color.darker(), size);
    }
}

/// Through whatever lies in front of it.
void GLThread::drawRuler(const FrameState& frame)
{
    if (frame.rulerLabel.isEmpty())
        return;
    disableTexturing();
    gl().Disable(GL_DEPTH_TEST);
    if (gl().BlendEquationEXT != nullptr)
        gl().BlendEquationEXT(GL_FUNC_ADD);
    gl().LineWidth(static_cast<GLfloat>(std::max(1.0, m_part.overlayScale)));
    setColor(frame.view.scaleBarColor);
    {
        const PrimitiveScope line(GL_LINES);
        for (const VoxelPlace& end : frame.view.ruler.ends) {
            const auto [x, y, z] = voxelCentre(frame.array->geometry(), end);
            vertex(x, y, z);
        }
    }
    gl().LineWidth(1);
    if (gl().BlendEquationEXT != nullptr)
        gl().BlendEquationEXT(frame.view.blendMode);
    gl().Enable(GL_DEPTH_TEST);
    enableTexturing();
}

void GLThread::drawRulerLabel(const FrameState& frame, QSize size)
{
    const Ruler& ruler = frame.view.ruler;
    if (ruler.stack != frame.array->id() || !showsVolume(frame.view.renderMode))
        return;
    const ViewProjection projection(frame.view, frame.scale, size);
    setOrtho({});
    Vector3 middle;
    for (const VoxelPlace& end : ruler.ends) {
        const auto [x, y, z] = voxelCentre(frame.array->geometry(), end);
        drawMark(projection.normalised({x, y, z}), kRulerEndHalf, frame.view.scaleBarColor, size);
        middle = middle + Vector3{x, y, z} * (1.0 / static_cast<double>(ruler.ends.size()));
    }
    const QPointF at = projection.project(middle).at;
    const double gap = kRulerLabelGap * m_part.overlayScale;
    m_text.draw({frame.rulerLabel, 12, true, frame.view.scaleBarColor},
                static_cast<int>(at.x() + gap) - m_part.part.x(),
                static_cast<int>(size.height() - at.y() + gap) - m_part.part.y());
}

void GLThread::drawBoundingBox(const FrameState& frame)
{
    disableTexturing();
    setColor(frame.view.boxColor);
    gl().CallList(frame.array->boxList(VoxelArray::WholeBox));
    enableTexturing();
}

/// The three faces that meet at the corner nearest to the viewer, drawn over the volume.
void GLThread::drawBoxFront(const FrameState& frame)
{
    const Matrix4f& m = frame.rotation;
    // The corner with the largest z in the viewer's space has, on each axis, the sign of that axis' z
    // component.
    const VoxelArray::BoxList faces[] = {
        m[2] >= 0 ? VoxelArray::RightFace : VoxelArray::LeftFace,
        m[6] >= 0 ? VoxelArray::TopFace : VoxelArray::BottomFace,
        m[10] >= 0 ? VoxelArray::FrontFace : VoxelArray::BackFace,
    };
    disableTexturing();
    setColor(frame.view.boxColor);
    for (const VoxelArray::BoxList face : faces)
        gl().CallList(frame.array->boxList(face));
    enableTexturing();
}

void GLThread::drawCutBox(const FrameState& frame)
{
    const auto [x, y, z] = cutBoxEdges(frame.array->geometry(), frame.cut);
    disableTexturing();
    gl().LineWidth(1);
    setColor(frame.view.cutBoxColor);
    boxEdges({x[0], y[0], z[0]}, {x[1], y[1], z[1]});
    enableTexturing();
}

void GLThread::drawAxes()
{
    struct Axis
    {
        QColor color;
        Vector3 end;
    };
    const Axis axes[] = {{Qt::red, {0.5, 0, 0}}, {Qt::green, {0, 0.5, 0}}, {Qt::blue, {0, 0, 0.5}}};
    gl().LineWidth(4);
    for (const Axis& axis : axes) {
        setColor(axis.color);
        const PrimitiveScope line(GL_LINES);
        vertex(0, 0, 0);
        vertex(axis.end.x, axis.end.y, axis.end.z);
    }
}

void GLThread::drawProjectionBox(const FrameState& frame)
{
    const OrthoBounds& bounds = frame.view.ortho;
    const PrimitiveScope lines(GL_LINES);
    for (const double z : {-1.0, 1.0}) {
        for (double x = bounds.left; x <= bounds.right; x += 2) {
            vertex(x, bounds.bottom, z);
            vertex(x, bounds.top, z);
        }
        for (double y = bounds.bottom; y <= bounds.top; y += 2) {
            vertex(bounds.left, y, z);
            vertex(bounds.right, y, z);
        }
    }
}

} // namespace tirn
