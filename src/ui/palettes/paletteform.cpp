// The palette editor: how it is built, and what it shows of the scene.

#include "ui/palettes/paletteform.h"

#include <algorithm>

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QSlider>
#include <QStackedWidget>
#include <QStyle>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "base/log.h"
#include "palettes/palettehistogram.h"
#include "scene/paletteedits.h"
#include "ui/palettes/formulagroup.h"
#include "ui/palettes/levelspanel.h"
#include "ui/widgets/floatspinbox.h"
#include "ui/widgets/taborder.h"

namespace tirn {

namespace {

/// The percentages of voxels that automatic zooming leaves out at first.
constexpr double kLeftOut = 1;

} // namespace

PaletteForm::PaletteForm(const FormServices& services, QWidget* parent)
    : ToolForm(services,
               Change::Stacks | Change::Voxels | Change::Channels | Change::Palettes | Change::Colours |
                   Change::Look,
               parent),
      m_stepEnds(new StepEnds(this)), m_palettes(new QComboBox(this)), m_stack(new QStackedWidget(this)),
      m_dim(new QCheckBox(tr("Dim dataset"), this)), m_lazy(new QCheckBox(tr("Lazy Redraw"), this)),
      m_tabs(new QTabWidget(this)), m_levels(new LevelsPanel(this)), m_menu(new QMenu(this))
{
    setWindowTitle(tr("Palette Editor"));
    setAcceptDrops(true);
    setFocusPolicy(Qt::ClickFocus);
    m_pages = {new PalettePage(PaletteView::Rgb, m_stack), new PalettePage(PaletteView::Hsv, m_stack)};
    m_stack->setObjectName("widgetStack1");
    for (PalettePage* page : m_pages) {
        m_stack->addWidget(page);
        connectPage(*page);
    }
    m_tabs->addTab(m_levels, tr("Levels"));
    m_tabs->addTab(buildFormulas(), tr("Axes and Curves"));
    m_tabs->setCornerWidget(buildChecks());
    buildMenu();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buildTop());
    layout->addWidget(m_stack, 1);
    layout->addWidget(buildWindowRow());
    layout->addWidget(m_tabs);
    connectLevels();
    connect(m_stepEnds, &StepEnds::ended, this, &PaletteForm::endStep);
    for (FloatSpinBox* spin : findChildren<FloatSpinBox*>())
        m_stepEnds->watch(spin);
    orderTabs();
    showSelected();
    // What is not shown learns of nothing, and must not be left with a palette that has gone.
    connect(&services.model, &SceneModel::changed, this, [this](Changes changes) {
        if (!(changes & Change::Palettes))
            return;
        endStep();
        if (!isVisible() && currentPalette() == nullptr)
            releasePalette();
    });
}

QToolButton* PaletteForm::button(const char* name, const QString& text, const QString& toolTip,
                                 void (PaletteForm::*slot)())
{
    auto* made = new QToolButton(this);
    made->setObjectName(name);
    made->setText(text);
    made->setToolTip(toolTip);
    made->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    made->setFocusPolicy(Qt::StrongFocus);
    connect(made, &QToolButton::clicked, this, slot);
    return made;
}

QToolButton* PaletteForm::menuButton(const char* name, const QString& text, const QString& toolTip,
                                     QMenu* menu)
{
    auto* made = new QToolButton(this);
    made->setObjectName(name);
    made->setText(text);
    made->setToolTip(toolTip);
    made->setPopupMode(QToolButton::InstantPopup);
    made->setFocusPolicy(Qt::StrongFocus);
    made->setMenu(menu);
    return made;
}

QWidget* PaletteForm::buildTop()
{
    auto* top = new QWidget(this);
    auto* row = new QHBoxLayout(top);
    row->setContentsMargins(0, 0, 0, 0);
    m_palettes->setObjectName("cboPalettes");
    m_palettes->setToolTip(tr("The palette that is edited."));
    m_palettes->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_palettes->setMinimumContentsLength(16);
    connect(m_palettes, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &PaletteForm::changeSelectedPalette);
    auto* more = menuButton("btnPalette", tr("Palette"), tr("New, load, save, close."), m_menu);
    auto* kinds = menuButton("btnNewFrom", tr("New from..."),
                             tr("Colours, fluorophores and maps to begin with."), buildKindsMenu());
    m_undo = button("btnUndo", tr("Undo"), tr("Take the last change of this palette back (Ctrl+Z)."),
                    &PaletteForm::undo);
    m_undo->setIcon(style()->standardIcon(QStyle::SP_ArrowBack));
    m_redo = button("btnRedo", tr("Redo"), tr("Make the change that was taken back again (Ctrl+Y)."),
                    &PaletteForm::redo);
    m_redo->setIcon(style()->standardIcon(QStyle::SP_ArrowForward));
    m_colorSpace = new QToolButton(this);
    m_colorSpace->setObjectName("btnToggleColorSpace");
    m_colorSpace->setText("HSB");
    m_colorSpace->setToolTip(tr("Edit hue, saturation and brightness, or red, green and blue."));
    m_colorSpace->setFocusPolicy(Qt::StrongFocus);
    connect(m_colorSpace, &QToolButton::clicked, this,
            [this] { toggleColorSpace(m_view == PaletteView::Rgb); });
    row->addWidget(m_palettes, 1);
    for (QWidget* each : std::initializer_list<QWidget*>{more, kinds, m_undo, m_redo, m_colorSpace})
        row->addWidget(each);
    return top;
}

QWidget* PaletteForm::buildWindowRow()
{
    auto* made = new QWidget(this);
    auto* row = new QHBoxLayout(made);
    row->setContentsMargins(0, 0, 0, 0);
    m_least = new QLabel("0", this);
    m_least->setObjectName("lblMin");
    m_largest = new QLabel("255", this);
    m_largest->setObjectName("lblMax");
    m_slider = new QSlider(Qt::Horizontal, this);
    m_slider->setObjectName("sldrPalette");
    m_slider->setToolTip(tr("Moves the part of the palette that is shown."));
    m_slider->setMinimumWidth(fontMetrics().averageCharWidth() * 10);
    connect(m_slider, &QSlider::valueChanged, this, &PaletteForm::offsetPalette);
    m_zoomIn = button("btnZoomIn", "+", tr("Show half as much."), &PaletteForm::zoomIn);
    m_zoomOut =
        button("btnZoomOut", QString(QChar(0x2212)), tr("Show twice as much."), &PaletteForm::zoomOut);
    m_zoomAuto = button("btnZoomAuto", tr("Auto"), tr("Show what most voxels use."), &PaletteForm::zoomAuto);
    const auto percent = [this](const char* name) {
        auto* spin = new FloatSpinBox(this);
        spin->setObjectName(name);
        spin->setDoubleLineStep(0.1);
        spin->setDoubleRange(0, 50);
        spin->setDoubleValue(kLeftOut);
        spin->setSuffix(" %");
        spin->setToolTip(tr("The share of the voxels that \"Auto\" leaves out at this end."));
        return spin;
    };
    m_fromLeast = percent("spnMinRange");
    m_fromLargest = percent("spnMaxRange");
    row->addWidget(m_least);
    row->addWidget(m_slider, 1);
    for (QWidget* each : std::initializer_list<QWidget*>{m_largest, m_zoomIn, m_zoomOut, m_zoomAuto,
                                                         new QLabel(tr("From Min"), this), m_fromLeast,
                                                         new QLabel(tr("From Max"), this), m_fromLargest})
        row->addWidget(each);
    return made;
}

QWidget* PaletteForm::buildChecks()
{
    auto* made = new QWidget(this);
    auto* row = new QHBoxLayout(made);
    row->setContentsMargins(0, 0, 0, 2);
    m_dim->setObjectName("chkDimwit");
    m_dim->setToolTip(tr("Rescale the intesity range to the actual bitdepth of the dataset."));
    m_lazy->setObjectName("chkLazy");
    m_lazy->setToolTip(tr("Don't update the main window until the mouse is released."));
    connect(m_dim, &QCheckBox::toggled, this, &PaletteForm::toggleSmartBitDepth);
    row->addWidget(m_dim);
    row->addWidget(m_lazy);
    return made;
}

QWidget* PaletteForm::buildFormulas()
{
    auto* made = new QWidget(this);
    auto* row = new QHBoxLayout(made);
    m_axisFormula = new FormulaGroup(tr("Axes"), "Axis", "Axes", this);
    m_curveFormula = new FormulaGroup(tr("Curves"), "CurvesType", "Curves", this);
    m_axisFormula->kind().addItems({tr("Histogram"), tr("Curves")});
    m_curveFormula->kind().addItem(tr("Power curve"));
    m_curveFormula->kind().insertSeparator(1);
    m_curveFormula->kind().addItem(tr("Ramp"));
    for (FormulaGroup* group : {m_axisFormula, m_curveFormula})
        row->addWidget(group, 1);
    connect(m_axisFormula, &FormulaGroup::curveChanged, this, &PaletteForm::recomputeAxes);
    connect(m_axisFormula, &FormulaGroup::presetChosen, this, &PaletteForm::changeAxesPresets);
    connect(&m_axisFormula->kind(), qOverload<int>(&QComboBox::currentIndexChanged), this,
            &PaletteForm::cboAxisChanged);
    connect(m_curveFormula, &FormulaGroup::curveChanged, this, &PaletteForm::recomputeCurves);
    connect(m_curveFormula, &FormulaGroup::presetChosen, this, &PaletteForm::changeCurvesPresets);
    connect(&m_curveFormula->kind(), qOverload<int>(&QComboBox::activated), this, [this](int type) {
        m_curveFormula->setOffsetOnly(type == kRampType);
        endStep();
        recomputeCurves();
        showHistogram();
    });
    return made;
}

void PaletteForm::connectPage(PalettePage& page)
{
    connect(&page.plot(), &PalettePlot::mousePressed, this, &PaletteForm::plotMousePressed);
    connect(&page.plot(), &PalettePlot::mouseMoved, this, &PaletteForm::plotMouseMoved);
    connect(&page.plot(), &PalettePlot::mouseReleased, this, &PaletteForm::plotMouseReleased);
    connect(&page, &PalettePage::indexChanged, this, &PaletteForm::indexChanged);
    connect(&page, &PalettePage::colorChanged, this, &PaletteForm::colorChanged);
    connect(&page, &PalettePage::editBoxClicked, this, &PaletteForm::editBoxClicked);
}

void PaletteForm::connectLevels()
{
    connect(m_levels, &LevelsPanel::dragBegan, this, [this] {
        endStep();
        m_isDragging = true;
    });
    connect(m_levels, &LevelsPanel::dragEnded, this, &PaletteForm::endDrag);
    connect(m_levels, &LevelsPanel::levelsChanged, this, &PaletteForm::setLevels);
    connect(m_levels, &LevelsPanel::scaleChanged, this, &PaletteForm::showHistogram);
    connect(m_levels, &LevelsPanel::autoRequested, this, [this](int channel) {
        endStep();
        edit(Change::Colours, [channel](Scene& shown) {
            if (const VoxelArray* array = shown.current())
                spreadOverVoxels(shown, *array, static_cast<std::size_t>(channel));
        });
    });
    connect(m_levels, &LevelsPanel::rowsMade, this, [this] {
        for (QSpinBox* spin : m_levels->findChildren<QSpinBox*>())
            m_stepEnds->watch(spin);
        orderTabs();
    });
}

void PaletteForm::orderTabs()
{
    chainTabs({m_palettes->parentWidget(), m_stack, m_slider->parentWidget(), m_tabs});
}

void PaletteForm::refresh(Changes changes)
{
    if (changes & Change::Palettes)
        populatePaletteBox();
    if (changes & (Change::Stacks | Change::Voxels | Change::Channels | Change::Look | Change::Palettes))
        changeSelectedArray();
    if (changes & Change::Colours)
        showColors();
}

/// The names, with the palette that was selected, or the one that took its place.
void PaletteForm::populatePaletteBox()
{
    const int before = m_palettes->currentIndex();
    const int there = selectedIndex();
    const auto count = static_cast<int>(scene().palettes.size());
    {
        const QSignalBlocker blocker(m_palettes);
        m_palettes->clear();
        for (const auto& palette : scene().palettes)
            m_palettes->addItem(palette->name());
        m_palettes->setCurrentIndex(there >= 0 ? there : std::min(std::max(before, 0), count - 1));
    }
    if (there < 0 || m_palettes->currentIndex() != before)
        showSelected();
}

int PaletteForm::selectedIndex() const
{
    const auto& palettes = scene().palettes;
    const auto found = std::find_if(palettes.begin(), palettes.end(),
                                    [this](const auto& each) { return each.get() == m_palette; });
    return found != palettes.end() ? static_cast<int>(found - palettes.begin()) : -1;
}

Palette* PaletteForm::currentPalette() const
{
    const int index = selectedIndex();
    return index >= 0 ? scene().palettes[static_cast<std::size_t>(index)].get() : nullptr;
}

void PaletteForm::releasePalette()
{
    m_palette = nullptr;
    endStep();
    for (PalettePage* page : m_pages)
        page->showPalette(nullptr, m_window);
}

void PaletteForm::changeSelectedPalette(int index)
{
    if (index >= static_cast<int>(scene().palettes.size())) {
        logWarning("changing to a non-existant palette");
        return;
    }
    const QSignalBlocker blocker(m_palettes);
    m_palettes->setCurrentIndex(index);
    showSelected();
    changeSelectedArray();
}

/// Takes over the palette that the list names.
void PaletteForm::showSelected()
{
    const int index = m_palettes->currentIndex();
    const auto count = static_cast<int>(scene().palettes.size());
    const Palette* selected =
        index >= 0 && index < count ? scene().palettes[static_cast<std::size_t>(index)].get() : nullptr;
    if (selected != m_palette)
        releasePalette();
    m_palette = selected;
    setEverythingEnabled(selected != nullptr);
    if (selected == nullptr) {
        showUndo();
        return;
    }
    restoreSpinners();
    for (PalettePage* page : m_pages) {
        const std::array<bool, 4> flags = viewFlags(selected->editFlags(), page->view());
        for (std::size_t i = 0; i < flags.size(); ++i) {
            const QSignalBlocker blocker(page->editBox(i));
            page->editBox(i).setChecked(flags[i]);
        }
    }
    showWindow();
    showHint();
    showUndo();
}

void PaletteForm::setEverythingEnabled(bool enabled)
{
    for (QWidget* each :
         std::initializer_list<QWidget*>{m_palettes, m_stack, m_slider->parentWidget(), m_tabs, m_colorSpace})
        each->setEnabled(enabled);
}

/// The values of the palette changed.
void PaletteForm::showColors()
{
    for (PalettePage* page : m_pages)
        page->showValues();
    showUndo();
    showLevels();
}

void PaletteForm::showUndo()
{
    const Palette* palette = currentPalette();
    m_undo->setEnabled(palette != nullptr && palette->hasUndo());
    m_redo->setEnabled(palette != nullptr && palette->hasRedo());
}

/// Advice where a stroke would change nothing.
void PaletteForm::showHint()
{
    for (PalettePage* page : m_pages) {
        const std::array<bool, 4> flags = page->flags();
        const bool none = std::none_of(flags.begin(), flags.end(), [](bool on) { return on; });
        page->plot().setHint(none && m_palette != nullptr ? tr("Tick the curves to draw.") : QString());
        page->plot().replot();
    }
}

int PaletteForm::stackDepth() const
{
    return currentArray() != nullptr ? shownDepth(scene(), *currentArray()) : 0;
}

int PaletteForm::channelOfSelected() const
{
    std::vector<int> palettes;
    if (currentArray() != nullptr) {
        services().model.read([&](const Scene& shown) {
            for (const Channel& channel : shown.current()->channels())
                palettes.push_back(channel.display.palette);
        });
    }
    return m_palette != nullptr ? channelOfPalette(palettes, selectedIndex()) : -1;
}

void PaletteForm::changeSelectedArray()
{
    if (scene().currentId() != m_shownStack) {
        m_shownStack = scene().currentId();
        showSmartBitDepth();
        // What a new stack is seen through is what one wants to edit.
        if (const Palette* first = paletteOfChannel(0); first != nullptr && first != m_palette) {
            const QSignalBlocker blocker(m_palettes);
            m_palettes->setCurrentIndex(services().model.read(
                [](const Scene& shown) { return shown.current()->channels().front().display.palette; }));
            showSelected();
        }
    }
    showHistogram();
    showLevelRows();
}

void PaletteForm::showSmartBitDepth()
{
    const VoxelArray* array = currentArray();
    const bool deep = array != nullptr && array->bitsPerSample() > 8;
    const bool dim = deep && array->stack().bitDepth - array->stack().realBitDepth() > 1;
    {
        const QSignalBlocker blocker(m_dim);
        m_dim->setEnabled(deep);
        m_dim->setChecked(dim);
    }
    toggleSmartBitDepth(dim);
}

void PaletteForm::showHistogram()
{
    const Palette* palette = currentPalette();
    const VoxelArray* array = currentArray();
    m_counts.clear();
    if (palette != nullptr && array != nullptr && !array->channels().empty()) {
        const int channel = std::max(0, channelOfSelected());
        m_counts = countsOnPalette(array->channels()[static_cast<std::size_t>(channel)].stats.histogram,
                                   palette->depth(), stackDepth());
    }
    const bool ramp = m_curveFormula->kind().currentIndex() == kRampType;
    const std::vector<double> heights =
        histogramHeights(m_counts, m_axes[0], ramp ? HistogramScale::Ramp : HistogramScale::Formula);
    for (PalettePage* page : m_pages) {
        page->plot().setCountAxis(highestCount(), m_levels->isLogarithmic());
        page->plot().setHistogram(heights);
        page->plot().replot();
    }
    showWindow();
}

double PaletteForm::highestCount() const
{
    return m_counts.empty() ? 0 : *std::max_element(m_counts.begin(), m_counts.end());
}

} // namespace tirn
