#pragma once

#include <list>

#include <QColor>
#include <QImage>
#include <QString>

namespace tirn {

/// A line of text for the picture.
struct TextLine
{
    QString text;
    /// Points at 96 dots an inch, before the painter's scale.
    int pointSize = 12;
    bool bold = false;
    QColor color = Qt::white;

    bool operator==(const TextLine&) const = default;
};

/// Draws text with the toolkit's painter into an image and blends it into the current frame buffer. May be
/// used on any thread with a context current; texturing and fragment programs must be off.
class TextPainter
{
public:
    /// `scale` multiplies font sizes.
    void setScale(double scale) { m_scale = scale; }

    /// The left end of the base line lies at (x, y), in device pixels from the lower left corner.
    void draw(const TextLine& line, int x, int y);

private:
    struct Painted
    {
        TextLine line;
        double scale = 1;
        QImage image;
        int descent = 0;
    };
    const Painted& painted(const TextLine& line);

    double m_scale = 1;
    /// The lines drawn last, newest first.
    std::list<Painted> m_cache;
};

} // namespace tirn
