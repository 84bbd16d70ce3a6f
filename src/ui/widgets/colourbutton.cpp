#include "ui/widgets/colourbutton.h"

#include <QColorDialog>
#include <QPainter>
#include <QStyle>

namespace tirn {

ColourButton::ColourButton(const QString& text, const QString& title, QWidget* parent)
    : QPushButton(text, parent), m_title(title)
{
    // Enter in a field beside it means that field.
    setAutoDefault(false);
    connect(this, &QPushButton::clicked, this, &ColourButton::choose);
    setColour(Qt::black);
}

void ColourButton::setColour(const QColor& colour)
{
    if (colour == m_colour)
        return;
    m_colour = colour;
    const int side = style()->pixelMetric(QStyle::PM_SmallIconSize);
    QPixmap swatch(QSize(side, side) * devicePixelRatioF());
    swatch.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&swatch);
    painter.fillRect(0, 0, side, side, palette().color(QPalette::Mid));
    painter.fillRect(1, 1, side - 2, side - 2, colour);
    setIcon(swatch);
}

void ColourButton::choose()
{
    const QColor chosen = QColorDialog::getColor(m_colour, this, m_title);
    if (chosen.isValid())
        Q_EMIT colourChosen(chosen);
}

} // namespace tirn
