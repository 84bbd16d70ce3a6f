#pragma once

#include <functional>
#include <vector>

#include <QWidget>

#include "palettes/palette.h"

namespace tirn {

/// A strip with the colours of a part of a palette, or with its opacity as grey.
class PaletteBarWidget : public QWidget
{
    Q_OBJECT

public:
    explicit PaletteBarWidget(QWidget* parent = nullptr);

    /// Every column in one colour.
    void fill(const QColor& color);
    /// The colour that stands for no palette.
    void setEmpty();
    /// The colours of the indices from `from` to `to`, spread over the width; opacity shows nowhere.
    void setRange(const Palette& palette, double from, double to);
    void setRangeWhite(const Palette& palette, double from, double to);
    /// One a device pixel, from left to right.
    const std::vector<QRgb>& columns() const { return m_columns; }
    QSize sizeHint() const override { return {kLeastWidth, kHeight}; }

    static constexpr int kHeight = 15;
    static constexpr int kLeastWidth = 256;

Q_SIGNALS:
    /// There are more or fewer columns than before; the range has to be set anew.
    void resized();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// Fills each column by its part of the way from left to right.
    void show(const std::function<QRgb(double)>& colorAt);

    std::vector<QRgb> m_columns;
};

/// The value of a table at a place between two indices, on the line between them, floored; a place outside
/// of the table has the value of its end.
double blendedEntry(const std::vector<double>& table, double place);

} // namespace tirn
