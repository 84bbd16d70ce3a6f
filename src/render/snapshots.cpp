#include "render/snapshots.h"

#include <QPainter>

#include "base/log.h"
#include "pictures/picturesize.h"

namespace tirn {

namespace {

/// Copies a part of a picture; what of it lies outside of either is left out.
void place(QImage& canvas, const QPoint& to, const QImage& picture, const QRect& from)
{
    QPainter painter(&canvas);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    const QRect inside = from & picture.rect();
    painter.drawImage(to + (inside.topLeft() - from.topLeft()), picture, inside);
}

/// Black, or nothing at all where pictures have opacity, unless a colour is given.
QImage canvasOf(QSize size, const QImage& like, const QColor& color = Qt::transparent)
{
    if (!fitsMemory(size))
        return {};
    QImage canvas(size, like.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    canvas.fill(color);
    return canvas;
}

/// The states of the current volume's channels, put back at the end.
class ChannelStates
{
public:
    explicit ChannelStates(Scene& scene) : m_scene(scene)
    {
        const std::scoped_lock lock(m_scene.mutex);
        for (const Channel& channel : m_scene.current()->channels())
            m_saved.push_back(channel.display.state);
    }
    ~ChannelStates() { set(m_saved); }
    ChannelStates(const ChannelStates&) = delete;
    ChannelStates& operator=(const ChannelStates&) = delete;

    int count() const { return static_cast<int>(m_saved.size()); }
    /// Shows one channel, or all with the item behind the last one.
    void show(int item)
    {
        std::vector<ChannelState> states;
        for (int c = 0; c < count(); ++c)
            states.push_back(item == count() || item == c ? ChannelState::Shown : ChannelState::Hidden);
        set(states);
    }

private:
    void set(const std::vector<ChannelState>& states)
    {
        const std::scoped_lock lock(m_scene.mutex);
        for (std::size_t c = 0; c < states.size(); ++c)
            m_scene.current()->channels()[c].display.state = states[c];
    }

    Scene& m_scene;
    std::vector<ChannelState> m_saved;
};

/// The additional rotation about y, put back to none at the end.
class EyeRotation
{
public:
    explicit EyeRotation(const SnapshotSource& source) : m_source(source) {}
    ~EyeRotation() { set(0); }
    EyeRotation(const EyeRotation&) = delete;
    EyeRotation& operator=(const EyeRotation&) = delete;

    void set(double degrees)
    {
        const std::scoped_lock lock(m_source.scene.mutex);
        m_source.scene.view.yRotation = degrees;
    }

private:
    const SnapshotSource& m_source;
};

/// The rotation of the view, put back at the end in whole degrees.
class ViewRotation
{
public:
    explicit ViewRotation(const SnapshotSource& source) : m_source(source)
    {
        const std::scoped_lock lock(source.scene.mutex);
        m_x = static_cast<int>(source.scene.view.rotX);
        m_y = static_cast<int>(source.scene.view.rotY);
        m_z = static_cast<int>(source.scene.view.rotZ);
    }
    ~ViewRotation() { m_source.rotate(m_x, m_y, m_z); }
    ViewRotation(const ViewRotation&) = delete;
    ViewRotation& operator=(const ViewRotation&) = delete;

private:
    const SnapshotSource& m_source;
    int m_x;
    int m_y;
    int m_z;
};

} // namespace

QImage channelGrid(const SnapshotSource& source, QSize grid, const std::vector<int>& items)
{
    if (source.scene.current() == nullptr)
        return {};
    const QSize frame = source.frame;
    const QSize size(grid.width() * frame.width(), grid.height() * frame.height());
    QImage canvas;
    const int cells = std::min(grid.width() * grid.height(), static_cast<int>(items.size()));
    for (int k = 0; k < cells; ++k) {
        ChannelStates states(source.scene);
        const int item = items[static_cast<std::size_t>(k)];
        if (item < 0 || item > states.count())
            continue;
        states.show(item);
        const QImage picture = source.capture();
        if (picture.isNull())
            return {};
        if (canvas.isNull())
            canvas = canvasOf(size, picture);
        if (canvas.isNull())
            return {};
        place(canvas, {k % grid.width() * frame.width(), k / grid.width() * frame.height()}, picture,
              picture.rect());
    }
    return canvas.isNull() ? canvasOf(size, {}) : canvas;
}

QImage stereoPair(const SnapshotSource& source, double angle, bool rightEyeDominant)
{
    EyeRotation eye(source);
    const StereoPlaces places = stereoPlaces(source.frame.width(), rightEyeDominant);
    QImage canvas;
    for (const auto& [degrees, x] :
         {std::pair(-angle / 2, places.minus), std::pair(angle / 2, places.plus)}) {
        eye.set(degrees);
        const QImage picture = source.capture();
        if (picture.isNull())
            return {};
        if (canvas.isNull())
            canvas = canvasOf({2 * source.frame.width(), source.frame.height()}, picture);
        if (canvas.isNull())
            return {};
        place(canvas, {x, 0}, picture, picture.rect());
    }
    return canvas;
}

QImage orthographicCross(const SnapshotSource& source, const CrossSides& sides)
{
    const VoxelArray* array = source.scene.current();
    if (array == nullptr)
        return {};
    const CrossLayout layout =
        crossLayout(source.frame, array->width(), array->height(), array->depth(), sides);
    logDebug("zthick %d zoffset %d", layout.zThick, layout.offset);
    const ViewRotation saved(source);
    QImage canvas;
    for (const CrossView& view : layout.views()) {
        source.rotate(view.rotX, view.rotY, 0);
        const QImage picture = source.capture();
        if (picture.isNull())
            return {};
        if (canvas.isNull())
            canvas = canvasOf(layout.canvas, picture, Qt::white);
        if (canvas.isNull())
            return {};
        place(canvas, view.to, picture, view.from);
    }
    return canvas;
}

} // namespace tirn
