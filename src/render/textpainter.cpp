#include "render/textpainter.h"

#include <algorithm>
#include <cmath>

#include <QFont>
#include <QFontMetrics>
#include <QPainter>

#include "gl/gltable.h"

namespace tirn {

namespace {

constexpr std::size_t kCachedLines = 8;
constexpr double kPixelsAPoint = 96.0 / 72.0;

} // namespace

const TextPainter::Painted& TextPainter::painted(const TextLine& line)
{
    const auto known = std::find_if(m_cache.begin(), m_cache.end(), [&](const Painted& entry) {
        return entry.line == line && entry.scale == m_scale;
    });
    if (known != m_cache.end()) {
        m_cache.splice(m_cache.begin(), m_cache, known);
        return m_cache.front();
    }
    QFont font("Times");
    font.setStyleHint(QFont::Serif);
    font.setPixelSize(std::max(4, static_cast<int>(std::lround(line.pointSize * kPixelsAPoint * m_scale))));
    font.setBold(line.bold);
    const QFontMetrics metrics(font);
    const QSize size(std::max(1, metrics.horizontalAdvance(line.text) + 4), std::max(1, metrics.height()));
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setFont(font);
        painter.setPen(line.color);
        painter.drawText(0, metrics.ascent(), line.text);
    }
    // Straight alpha, rows from the bottom up, as the frame buffer takes them.
    m_cache.push_front(
        {line, m_scale, image.convertToFormat(QImage::Format_RGBA8888).mirrored(), metrics.descent()});
    if (m_cache.size() > kCachedLines)
        m_cache.pop_back();
    return m_cache.front();
}

void TextPainter::draw(const TextLine& line, int x, int y)
{
    if (line.text.isEmpty())
        return;
    const Painted& text = painted(line);
    gl().PixelStorei(GL_UNPACK_ALIGNMENT, 4);
    gl().WindowPos2i(x, y - text.descent);
    gl().DrawPixels(text.image.width(), text.image.height(), GL_RGBA, GL_UNSIGNED_BYTE,
                    text.image.constBits());
    gl().PixelStorei(GL_UNPACK_ALIGNMENT, 1);
}

} // namespace tirn
