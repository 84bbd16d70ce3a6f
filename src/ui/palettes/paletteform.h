#pragma once

#include <array>
#include <vector>

#include "palettes/palettekinds.h"
#include "palettes/palettewindow.h"
#include "ui/palettes/palettepage.h"
#include "ui/palettes/stepends.h"
#include "ui/toolform.h"

class QComboBox;
class QGridLayout;
class QLabel;
class QMenu;
class QSlider;
class QSpinBox;
class QStackedWidget;
class QTabWidget;
class QToolButton;

namespace tirn {

class FormulaGroup;
class LevelsPanel;

/// The palette editor: the curves of the selected palette over the histogram of the channel that uses it.
///
/// Every change goes through the model at once, so that the picture follows while a button is down. One
/// gesture, from press to release, is one step of the palette's own undo.
class PaletteForm : public ToolForm
{
    Q_OBJECT

public:
    /// The place of the ramp in the list of curves.
    static constexpr int kRampType = 2;

    PaletteForm(const FormServices& services, QWidget* parent);

    /// The selected palette, null when there is none.
    Palette* currentPalette() const;
    const PaletteWindow& window() const { return m_window; }
    PalettePage& page() const { return *m_pages[static_cast<std::size_t>(m_view)]; }
    LevelsPanel& levels() const { return *m_levels; }

public Q_SLOTS:
    void newPalette();
    void newPalette12bit();
    void newPaletteOfKind(const tirn::PaletteKind& kind);
    void dupePalette();
    void loadPalette();
    /// From the last name to the first; one that is not there ends it.
    void loadPalette(const QStringList& names);
    /// A palette of a session.
    void loadPalette(const QDomElement& element);
    void savePalette();
    void savePaletteAs();
    void closePalette();

    void changeSelectedPalette(int index);
    void changeSelectedArray();
    void populatePaletteBox();
    void setEverythingEnabled(bool enabled);

    void plotMousePressed(const QMouseEvent& event);
    void plotMouseMoved(const QMouseEvent& event);
    void plotMouseReleased(const QMouseEvent& event);
    void indexChanged(double index);
    void colorChanged(double value);
    void editBoxClicked();
    void undo();
    void redo();
    void equalize();

    void zoomIn();
    void zoomOut();
    void zoomAuto();
    void offsetPalette(int start);
    /// The window shows what the stack's real bits can reach, or all.
    void toggleSmartBitDepth(bool dim);
    void toggleColorSpace(bool hsv);

    void recomputeCurves();
    void recomputeAxes();
    void changeCurvesPresets(int preset);
    void changeAxesPresets(int preset);
    void cboAxisChanged(int axis);

    void popMenu();

Q_SIGNALS:
    void paletteAssigned();
    void paletteListChanged();

protected:
    void refresh(Changes changes) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    using PaletteEdit = std::function<void(Palette&)>;

    QWidget* buildTop();
    QWidget* buildWindowRow();
    QWidget* buildChecks();
    QWidget* buildFormulas();
    QToolButton* button(const char* name, const QString& text, const QString& toolTip,
                        void (PaletteForm::*slot)());
    QToolButton* menuButton(const char* name, const QString& text, const QString& toolTip, QMenu* menu);
    void buildMenu();
    QMenu* buildKindsMenu();
    QMenu* buildVisionMenu();
    void connectPage(PalettePage& page);
    void connectLevels();
    void orderTabs();

    int selectedIndex() const;
    void releasePalette();
    void showSelected();
    void showColors();
    void showUndo();
    void showWindow();
    void showHint();
    void showHistogram();
    void showLevels();
    void showLevelRows();
    void showSmartBitDepth();

    const VoxelArray* currentArray() const { return scene().current(); }
    /// The channel of the current volume that uses the palette, -1 for none.
    int channelOfSelected() const;
    double highestCount() const;
    int stackDepth() const;

    /// Adds a palette and selects it.
    void add(std::unique_ptr<Palette> palette);
    /// The same, and gives it to the channel that used the one selected before.
    void addForChannel(std::unique_ptr<Palette> palette);
    /// Changes the selected palette as part of the step at hand, and draws, or waits for the end of a drag.
    void change(const PaletteEdit& changeValues);
    void change(Palette& palette, const PaletteEdit& changeValues);
    void beginStep(Palette& palette);
    void endStep() { m_stepped = nullptr; }
    void endDrag();
    void upload(Palette& palette);
    void setLevels(int channel, const PaletteLevels& levels);
    Palette* paletteOfChannel(int channel) const;
    bool waitsForRelease() const;
    void preserveSpinners();
    void restoreSpinners();
    bool isInSpinBox() const;
    bool triggerShortcut(const QKeyEvent& event);
    void passToPicture(QKeyEvent& event);
    void moveIndex(int step);
    void shiftByKey(int places);
    void offsetByKey(double amount);
    void stepByKey(bool up);

    /// Compared, and looked up in the list before it is used: it may have gone.
    const Palette* m_palette = nullptr;
    PaletteView m_view = PaletteView::Rgb;
    PaletteWindow m_window;
    StackId m_shownStack = StackId::None;
    std::vector<double> m_counts;
    CurvePoint m_lastPoint;
    bool m_isDragging = false;
    /// The palette whose history has the step at hand; null between steps.
    Palette* m_stepped = nullptr;
    /// The formulas of the histogram's axis and of the curves' axis.
    std::array<PaletteCurve, 2> m_axes;
    StepEnds* m_stepEnds;

    QComboBox* m_palettes;
    QStackedWidget* m_stack;
    std::array<PalettePage*, 2> m_pages;
    QToolButton* m_undo = nullptr;
    QToolButton* m_redo = nullptr;
    QToolButton* m_colorSpace = nullptr;
    QSlider* m_slider = nullptr;
    QLabel* m_least = nullptr;
    QLabel* m_largest = nullptr;
    QToolButton* m_zoomIn = nullptr;
    QToolButton* m_zoomOut = nullptr;
    QToolButton* m_zoomAuto = nullptr;
    FloatSpinBox* m_fromLeast = nullptr;
    FloatSpinBox* m_fromLargest = nullptr;
    QCheckBox* m_dim;
    QCheckBox* m_lazy;
    QTabWidget* m_tabs;
    LevelsPanel* m_levels;
    FormulaGroup* m_axisFormula;
    FormulaGroup* m_curveFormula;
    QMenu* m_menu;
};

/// The names of files in a text that was dropped: one a line, plain or as an address.
QStringList namesOfText(const QString& text);

} // namespace tirn
