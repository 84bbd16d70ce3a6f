#include "ui/palettes/palettepage.h"

#include <algorithm>
#include <cmath>

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "ui/palettes/palettebarwidget.h"
#include "ui/widgets/floatspinbox.h"

namespace tirn {

namespace {

struct CurveTexts
{
    const char* label;
    const char* spin;
    const char* box;
    QColor color;
};

struct PageTexts
{
    const char* plot;
    const char* bar;
    const char* index;
    std::array<CurveTexts, 4> curves;
};

const PageTexts& textsOf(PaletteView view)
{
    static const PageTexts rgb = {"wtPlot1",
                                  "barRGB",
                                  "spnIndex",
                                  {{{"Red", "spnRed", "chkEditRed", QColor(255, 64, 64)},
                                    {"Green", "spnGreen", "chkEditGreen", QColor(64, 224, 64)},
                                    {"Blue", "spnBlue", "chkEditBlue", QColor(88, 136, 255)},
                                    {"Alpha", "spnAlpha", "chkEditAlpha", Qt::white}}}};
    static const PageTexts hsv = {
        "wtHSVPlot",
        "barHSV",
        "spnHSVIndex",
        {{{"Hue", "spnHSVHue", "chkHSVEditHue", QColor(255, 160, 48)},
          {"Saturation", "spnHSVSaturation", "chkHSVEditSaturation", QColor(64, 216, 216)},
          {"Brightness", "spnHSVValue", "chkHSVEditValue", QColor(240, 232, 96)},
          {"Alpha", "spnHSVAlpha", "chkHSVEditAlpha", Qt::white}}}};
    return view == PaletteView::Rgb ? rgb : hsv;
}

/// Both pages have the tool tips of the first one.
constexpr const char* kIndexTip = "Index into the color lookup table.";
constexpr const char* kValueTips[] = {"Red intesity for given index.", "Green intensity for given index.",
                                      "Blue intensity for given index.", "Alpha value for given index."};

/// Until a palette says otherwise.
constexpr double kLargestNumber = 4096;

std::array<PalettePlot::CurveStyle, 4> styles(PaletteView view)
{
    std::array<PalettePlot::CurveStyle, 4> made;
    for (std::size_t i = 0; i < made.size(); ++i)
        made[i] = {textsOf(view).curves[i].label, textsOf(view).curves[i].color};
    return made;
}

QPixmap swatch(const QColor& color, const QWidget& widget)
{
    const int side = widget.fontMetrics().height() * 2 / 3;
    QPixmap made(QSize(side, side) * widget.devicePixelRatioF());
    made.setDevicePixelRatio(widget.devicePixelRatioF());
    made.fill(color);
    // White is to be seen on white.
    QPainter painter(&made);
    painter.setPen(widget.palette().color(QPalette::Mid));
    painter.drawRect(0, 0, side - 1, side - 1);
    return made;
}

} // namespace

PalettePage::PalettePage(PaletteView view, QWidget* parent)
    : QWidget(parent), m_view(view), m_plot(new PalettePlot(styles(view), this)), m_bars(new QWidget(this)),
      m_bar(new PaletteBarWidget(m_bars)), m_opacityBar(new PaletteBarWidget(m_bars)),
      m_index(new FloatSpinBox(this))
{
    m_plot->setObjectName(textsOf(view).plot);
    m_plot->setMinimumSize(320, 150);
    m_bar->setObjectName(textsOf(view).bar);
    m_bar->setToolTip(tr("The colours of the indices above."));
    m_opacityBar->setToolTip(tr("Their opacity, from black for none to white."));
    auto* bars = new QVBoxLayout(m_bars);
    bars->setContentsMargins(0, 2, 0, 2);
    bars->setSpacing(2);
    bars->addWidget(m_bar);
    bars->addWidget(m_opacityBar);
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setColumnStretch(0, 1);
    layout->setRowStretch(0, 1);
    layout->addWidget(m_plot, 0, 0);
    layout->addWidget(m_bars, 1, 0);
    buildNumbers();
    connect(m_plot, &PalettePlot::canvasMoved, this, &PalettePage::fitBars);
    connect(m_bar, &PaletteBarWidget::resized, this, &PalettePage::showValues);
}

void PalettePage::buildNumbers()
{
    auto* numbers = new QGridLayout;
    const auto addRow = [&](QWidget* first, FloatSpinBox* spin, const char* name, const char* tip) {
        spin->setObjectName(name);
        spin->setDoubleRange(0, kLargestNumber);
        spin->setToolTip(tr(tip));
        const int row = numbers->rowCount();
        numbers->addWidget(first, row, 0);
        numbers->addWidget(spin, row, 1);
    };
    auto* label = new QLabel(tr("Index"), this);
    label->setBuddy(m_index);
    addRow(label, m_index, textsOf(m_view).index, kIndexTip);
    connect(m_index, &FloatSpinBox::doubleValueChanged, this, &PalettePage::indexChanged);
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        const CurveTexts& texts = textsOf(m_view).curves[i];
        m_edits[i] = new QCheckBox(tr(texts.label), this);
        m_edits[i]->setObjectName(texts.box);
        m_edits[i]->setIcon(swatch(texts.color, *this));
        m_edits[i]->setToolTip(tr("Strokes, shifts and formulas change this curve."));
        m_values[i] = new FloatSpinBox(this);
        addRow(m_edits[i], m_values[i], texts.spin, kValueTips[i]);
        connect(m_values[i], &FloatSpinBox::doubleValueChanged, this, &PalettePage::colorChanged);
        connect(m_edits[i], &QCheckBox::clicked, this, &PalettePage::editBoxClicked);
    }
    numbers->setRowStretch(numbers->rowCount(), 1);
    static_cast<QGridLayout*>(layout())->addLayout(numbers, 0, 1, 2, 1);
}

/// Below the canvas, not below the axes beside it.
void PalettePage::fitBars()
{
    const QRect canvas = m_plot->canvas()->geometry();
    m_bars->layout()->setContentsMargins(canvas.left(), 2, m_plot->width() - canvas.right() - 1, 2);
}

int PalettePage::index() const { return static_cast<int>(std::floor(m_index->doubleValue() + 0.5)); }

std::array<bool, 4> PalettePage::flags() const
{
    std::array<bool, 4> made;
    std::transform(m_edits.begin(), m_edits.end(), made.begin(), [](auto* box) { return box->isChecked(); });
    return made;
}

void PalettePage::showPalette(const Palette* palette, const PaletteWindow& window)
{
    if (palette != m_palette || palette == nullptr)
        m_plot->bind(palette, m_view);
    m_palette = palette;
    m_window = window;
    const double last = palette != nullptr ? palette->size() - 1 : kLargestNumber;
    const QSignalBlocker blocker(m_index);
    m_index->setDoubleRange(0, last);
    for (FloatSpinBox* spin : m_values) {
        const QSignalBlocker valueBlocker(spin);
        spin->setDoubleRange(0, palette != nullptr ? 255 : kLargestNumber);
    }
    m_plot->setIndexAxis(window.start, std::min<double>(window.start + window.span, last));
    showValues();
}

void PalettePage::showValues()
{
    if (m_palette == nullptr) {
        m_bar->setEmpty();
        m_opacityBar->setEmpty();
        m_plot->replot();
        return;
    }
    const std::array<double, 4> entry = entryOf(*m_palette, m_view, index());
    for (std::size_t i = 0; i < entry.size(); ++i) {
        const QSignalBlocker blocker(m_values[i]);
        m_values[i]->setDoubleValue(entry[i]);
    }
    const double last = m_palette->size() - 1;
    const double end = std::min<double>(m_window.start + m_window.span, last);
    m_bar->setRange(*m_palette, m_window.start, end);
    m_opacityBar->setRangeWhite(*m_palette, m_window.start, end);
    m_plot->setMarkedIndex(index());
    m_plot->replot();
}

void PalettePage::setBarShown(bool shown) { m_bars->setVisible(shown); }

} // namespace tirn
