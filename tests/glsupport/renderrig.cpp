#include "glsupport/renderrig.h"

#include <cstring>

#include <QCoreApplication>
#include <QThread>

#include "gl/gltable.h"
#include "render/nvidiathread.h"

namespace tirn::test {

OffscreenSurface::~OffscreenSurface()
{
    if (m_buffer != nullptr && m_context.makeCurrent())
        m_buffer.reset();
}

void OffscreenSurface::giveBack()
{
    QThread* owner = QCoreApplication::instance()->thread();
    m_context.doneCurrent();
    m_context.context().moveToThread(owner);
}

bool OffscreenSurface::makeCurrent()
{
    if (!m_context.makeCurrent())
        return false;
    if (m_buffer == nullptr)
        m_buffer = std::make_unique<QOpenGLFramebufferObject>(m_size,
                                                              QOpenGLFramebufferObject::CombinedDepthStencil);
    return m_buffer->bind();
}

void OffscreenSurface::swap()
{
    gl().Finish();
    const std::scoped_lock lock(m_mutex);
    ++m_frames;
    m_swapped.notify_all();
}

int OffscreenSurface::frames() const
{
    const std::scoped_lock lock(m_mutex);
    return m_frames;
}

void OffscreenSurface::waitForFrames(int count)
{
    std::unique_lock lock(m_mutex);
    m_swapped.wait(lock, [&] { return m_frames >= count; });
}

QImage OffscreenSurface::image()
{
    QImage image(m_size, QImage::Format_RGBA8888);
    gl().PixelStorei(GL_PACK_ALIGNMENT, 1);
    gl().ReadPixels(0, 0, m_size.width(), m_size.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    return image.mirrored();
}

void CountingEvents::rotationDrawn(double /*x*/, double y, double z)
{
    ++rotations;
    lastY = y;
    lastZ = z;
}

void CountingEvents::keyFrameRecorded(int count) { keyFrames = count; }

std::shared_ptr<ImageFile> imageOf(const PlainStack& stack)
{
    const std::vector<std::uint8_t> bytes = stack.bytes();
    VoxelBuffer buffer(static_cast<std::int64_t>(bytes.size()));
    std::memcpy(buffer.data(), bytes.data(), bytes.size());
    auto image =
        std::make_shared<ImageFile>(std::move(buffer), stack.x, stack.y, stack.z, stack.channels, stack.bits);
    image->generateStatistics();
    return image;
}

std::unique_ptr<VoxelArray> makeVolume(const std::vector<PlainStack>& timePoints, const VolumeSpec& spec)
{
    auto array = std::make_unique<VoxelArray>(
        VolumeOptions{spec.kind, spec.blockLimit, spec.blockLimit, false, spec.curves});
    for (const PlainStack& stack : timePoints)
        array->appendImage(imageOf(stack));
    array->stack() = array->images().front()->attributes();
    array->setChannelCount(timePoints.front().channels);
    array->setTimePoints(static_cast<int>(timePoints.size()));
    for (std::size_t i = 0; i < timePoints.size(); ++i)
        array->encode(spec.target, spec.finalZ);
    array->resetCurves();
    return array;
}

Drawing& testedDrawing()
{
    static Drawing drawing = Drawing::Card;
    return drawing;
}

CompositorView asDrawn(CompositorView view)
{
    if (testedDrawing() == Drawing::Processor)
        view.blockLimit = 1024;
    return view;
}

RenderRig::RenderRig(QSize size, RenderThreadKind kind)
    : m_hidden(std::make_unique<HiddenContext>()), m_kind(kind)
{
    scene.settings.drawing = testedDrawing();
    m_hidden->makeCurrent();
    m_shaders = std::make_unique<Shaders>();
    m_paletteTables = std::make_unique<GlPaletteTables>(kind, m_hidden.get());
    m_surface = std::make_unique<OffscreenSurface>(size, *m_hidden);
    const RenderHost host{scene, *m_shaders, renderLock, *m_surface, events, kind};
    m_thread = makeRenderThread(host);
}

RenderRig::~RenderRig()
{
    m_thread->stopAndWait();
    m_hidden->makeCurrent();
    m_thread->clearLists();
    m_thread.reset();
    scene.arrays.clear();
    scene.palettes.clear();
    m_shaders.reset();
}

VoxelArray& RenderRig::show(const std::vector<PlainStack>& timePoints, const VolumeSpec& spec)
{
    VolumeSpec withKind = spec;
    withKind.kind = m_kind;
    m_hidden->makeCurrent();
    scene.arrays.push_back(makeVolume(timePoints, withKind));
    scene.currentIndex = static_cast<int>(scene.arrays.size()) - 1;
    m_thread->forceRebuild = true;
    return *scene.arrays.back();
}

std::unique_ptr<Palette> paletteOf(const ColourTable& table, PaletteTables& tables)
{
    std::vector<PaletteEntry> entries;
    for (std::size_t i = 0; i + 3 < table.size(); i += 4)
        entries.push_back({table[i], table[i + 1], table[i + 2], table[i + 3]});
    return std::make_unique<Palette>(entries, 4, "table", &tables);
}

void RenderRig::setTables(const std::vector<ColourTable>& tables)
{
    m_hidden->makeCurrent();
    scene.palettes.clear();
    for (std::size_t c = 0; c < tables.size(); ++c) {
        scene.palettes.push_back(paletteOf(tables[c], *m_paletteTables));
        if (VoxelArray* array = scene.current())
            array->channels()[c].display.palette = static_cast<int>(c);
    }
    m_thread->forceRebuild = true;
}

QImage RenderRig::draw()
{
    m_surface->makeCurrent();
    m_thread->drawNextFrame(m_surface->size());
    return m_surface->image();
}

Picture pictureOf(const QImage& image)
{
    Picture picture;
    picture.size = image.width();
    picture.covered.assign(static_cast<std::size_t>(image.width() * image.height()), true);
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    for (int row = 0; row < rgb.height(); ++row) {
        const auto* line = rgb.constScanLine(row);
        picture.rgb.insert(picture.rgb.end(), line, line + 3 * rgb.width());
    }
    return picture;
}

} // namespace tirn::test
