#include "render/picturemaker.h"

#include <algorithm>
#include <new>

#include "base/log.h"
#include "gl/gltable.h"
#include "gl/pbuffer.h"
#include "pictures/picturesize.h"

namespace tirn {

namespace {

/// Tiles are drawn this much larger on each side than what is taken of them: lines whose middle lies outside
/// of a tile still reach into it.
constexpr int kTileMargin = 16;

/// The edges of tiles along a side: one piece as far as the limit reaches.
struct TileCut
{
    int length;
    int margin;
    int count;
};

TileCut cutSide(int side, int limit)
{
    if (side <= limit)
        return {side, 0, 1};
    const int margin = std::min(kTileMargin, (limit - 1) / 2);
    const int length = limit - 2 * margin;
    return {length, margin, (side + length - 1) / length};
}

/// Copies what was read of a tile, rows from the bottom up, to its place; y counts from the bottom.
void copyTile(const QImage& tile, const QRect& drawn, const QRect& taken, QImage& picture)
{
    const QRgb opaque = picture.hasAlphaChannel() ? 0 : 0xff000000;
    for (int row = 0; row < taken.height(); ++row) {
        const auto* from = reinterpret_cast<const QRgb*>(tile.constScanLine(taken.y() - drawn.y() + row)) +
                           (taken.x() - drawn.x());
        auto* to =
            reinterpret_cast<QRgb*>(picture.scanLine(picture.height() - 1 - (taken.y() + row))) + taken.x();
        for (int x = 0; x < taken.width(); ++x)
            to[x] = from[x] | opaque;
    }
}

int lowered(int limit, int wanted) { return wanted > 0 ? std::min(limit, wanted) : limit; }

QString sizeText(QSize size) { return QString::asprintf("%d x %d", size.width(), size.height()); }

} // namespace

void limitToOpacity(QImage& picture)
{
    for (int y = 0; y < picture.height(); ++y) {
        auto* pixels = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const int alpha = qAlpha(pixels[x]);
            pixels[x] = qRgba(std::min(qRed(pixels[x]), alpha), std::min(qGreen(pixels[x]), alpha),
                              std::min(qBlue(pixels[x]), alpha), alpha);
        }
    }
}

PictureMaker::PictureMaker(GLThread& thread, const Limits& limits) : m_thread(thread), m_limits(limits) {}

QImage PictureMaker::draw(const PictureRequest& request, const Progress& progress)
{
    m_error.clear();
    if (request.size.width() < 1 || request.size.height() < 1) {
        m_error = "A picture of " + sizeText(request.size) + " pixels cannot be made";
        return {};
    }
    QImage picture;
    if (fitsMemory(request.size))
        picture = QImage(request.size,
                         request.transparent ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    try {
        if (picture.isNull())
            m_error = "Could not allocate memory for a picture of " + sizeText(request.size) + " pixels";
        else if (drawTiles(request, progress, picture))
            return request.transparent ? picture.convertToFormat(QImage::Format_ARGB32) : picture;
    } catch (const std::bad_alloc&) {
        m_error = "Could not allocate memory for buffer";
    }
    return {};
}

bool PictureMaker::drawTiles(const PictureRequest& request, const Progress& progress, QImage& picture)
{
    const int limit = lowered(PBuffer::largestSide(), m_limits.tile);
    const int viewport = lowered(PBuffer::largestSide(), m_limits.viewport);
    const TileCut across = cutSide(request.size.width(), limit);
    const TileCut along = cutSide(request.size.height(), limit);
    const QSize tileSize(across.length + 2 * across.margin, along.length + 2 * along.margin);
    PBuffer buffer("rgba", true);
    if (!buffer.Initialize(tileSize.width(), tileSize.height(), false, true)) {
        logWarning("Massively screwed");
        m_error = "Could not allocate pbuffer";
        return false;
    }
    QImage tile(tileSize, QImage::Format_RGB32);
    if (tile.isNull())
        throw std::bad_alloc();
    buffer.Activate();
    m_thread.setupBuffer();
    gl().PixelStorei(GL_PACK_ROW_LENGTH, tileSize.width());
    const int tiles = across.count * along.count;
    for (int i = 0; i < tiles && !progress.cancelled(); ++i) {
        const QRect taken = QRect((i % across.count) * across.length, (i / across.count) * along.length,
                                  across.length, along.length) &
                            picture.rect();
        const QRect drawn = taken.adjusted(-across.margin, -along.margin, across.margin, along.margin);
        m_thread.drawPicture({request.size, drawn, request.overlayScale, request.transparent, viewport});
        gl().ReadPixels(0, 0, drawn.width(), drawn.height(), GL_BGRA, GL_UNSIGNED_BYTE, tile.bits());
        copyTile(tile, drawn, taken, picture);
        progress("Drawing", i + 1, tiles);
    }
    buffer.Deactivate();
    if (request.transparent)
        limitToOpacity(picture);
    return !progress.cancelled();
}

} // namespace tirn
