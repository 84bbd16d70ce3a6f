// The palette editor: strokes, numbers and keys.

#include <algorithm>
#include <cmath>
#include <utility>

#include <QAbstractSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenu>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStackedWidget>

#include "base/log.h"
#include "palettes/palettehistogram.h"
#include "ui/messages.h"
#include "ui/palettes/paletteform.h"
#include "ui/widgets/floatspinbox.h"

namespace tirn {

bool PaletteForm::waitsForRelease() const { return m_isDragging && m_lazy->isChecked(); }

void PaletteForm::beginStep(Palette& palette)
{
    if (m_stepped == &palette)
        return;
    palette.pushUndo();
    m_stepped = &palette;
}

void PaletteForm::upload(Palette& palette)
{
    try {
        palette.upload();
    } catch (int error) {
        logWarning("The card did not take a palette: 0x%x", static_cast<unsigned>(error));
    }
}

void PaletteForm::change(const PaletteEdit& changeValues)
{
    if (Palette* palette = currentPalette())
        change(*palette, changeValues);
}

void PaletteForm::change(Palette& palette, const PaletteEdit& changeValues)
{
    beginStep(palette);
    const bool waits = waitsForRelease();
    edit(waits ? Changes() : Change::Colours, [&](Scene&) {
        changeValues(palette);
        palette.setModified(true);
        if (!waits)
            upload(palette);
    });
    // The model tells nobody of what waits, and a form that is hidden of nothing.
    if (waits || !isVisible())
        showColors();
}

void PaletteForm::endDrag()
{
    const bool waited = waitsForRelease();
    m_isDragging = false;
    if (waited && m_stepped != nullptr)
        edit(Change::Colours, [&](Scene&) { upload(*m_stepped); });
    endStep();
}

void PaletteForm::plotMousePressed(const QMouseEvent& event)
{
    page().plot().canvas()->setFocus();
    if (event.button() == Qt::RightButton) {
        popMenu();
        return;
    }
    Palette* palette = currentPalette();
    if (palette == nullptr)
        return;
    endStep();
    beginStep(*palette);
    m_isDragging = true;
    m_lastPoint = page().plot().pointAt(event.pos());
    showUndo();
}

void PaletteForm::plotMouseMoved(const QMouseEvent& event)
{
    const Palette* palette = currentPalette();
    if (!m_isDragging || palette == nullptr || event.buttons() == Qt::NoButton)
        return;
    const auto target = dragTarget(m_lastPoint, page().plot().pointAt(event.pos()), palette->size());
    if (!target)
        return;
    const bool shifts = event.modifiers() & Qt::ShiftModifier;
    const bool offsets = event.modifiers() & Qt::ControlModifier;
    change([&](Palette& edited) {
        if (!shifts && !offsets)
            drawLine(edited, m_view, m_lastPoint, *target);
        if (shifts && target->x != m_lastPoint.x)
            shiftCurves(edited, m_view, target->x - m_lastPoint.x);
        if (offsets && target->y != m_lastPoint.y)
            offsetCurves(edited, m_view, target->y - m_lastPoint.y);
    });
    m_lastPoint = *target;
}

void PaletteForm::plotMouseReleased(const QMouseEvent& event)
{
    if (!m_isDragging)
        return;
    endDrag();
    const int index = page().plot().pointAt(event.pos()).x;
    for (PalettePage* each : m_pages)
        each->indexSpin().setDoubleValue(index);
}

void PaletteForm::indexChanged(double /*index*/)
{
    endStep();
    page().showValues();
}

void PaletteForm::colorChanged(double /*value*/)
{
    const Palette* palette = currentPalette();
    if (palette == nullptr)
        return;
    const int index = page().index();
    const std::array<bool, 4> flags = page().flags();
    const std::array<double, 4> before = entryOf(*palette, m_view, index);
    std::array<double, 4> values = before;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double shown = std::floor(std::clamp(before[i], 0.0, 255.0) + 0.5);
        const double number = std::floor(page().valueSpin(i).doubleValue() + 0.5);
        // A value that strays beyond what the box can show stays where it is.
        if (flags[i] && number != shown)
            values[i] = number;
    }
    if (values != before)
        change([&](Palette& edited) { setEntry(edited, m_view, index, values); });
    else
        page().showValues();
}

void PaletteForm::editBoxClicked()
{
    Palette* palette = currentPalette();
    if (palette == nullptr)
        return;
    PaletteEditFlags flags = palette->editFlags();
    for (const PalettePage* each : m_pages)
        setViewFlags(flags, each->view(), each->flags());
    edit({}, [&](Scene&) { palette->setEditFlags(flags); });
    endStep();
    showHint();
}

void PaletteForm::undo()
{
    endStep();
    Palette* palette = currentPalette();
    if (palette == nullptr || !palette->hasUndo())
        return;
    edit(Change::Colours, [&](Scene&) { palette->undo(); });
    if (!isVisible())
        showColors();
}

void PaletteForm::redo()
{
    endStep();
    Palette* palette = currentPalette();
    if (palette == nullptr || !palette->hasRedo())
        return;
    edit(Change::Colours, [&](Scene&) { palette->redo(); });
    if (!isVisible())
        showColors();
}

void PaletteForm::equalize()
{
    constexpr int aboveBackground = 2;
    const int channel = channelOfSelected();
    StackStats stats;
    if (channel >= 0)
        stats = statsOnPalette(currentArray()->channels()[static_cast<std::size_t>(channel)].stats,
                               currentPalette()->depth(), stackDepth());
    if (std::none_of(stats.histogram.begin(), stats.histogram.end(), [](auto n) { return n > 0; })) {
        logDebug("Histrogram equilization!");
        showMessage(this, QMessageBox::Information, tr("No can do"),
                    tr("Sorry, the palette must be assigned to a channel in\n "
                       "in the current stack.  Otherwise, I don't know what to generate it off of."));
        return;
    }
    endStep();
    change([&](Palette& edited) { edited.equalize(aboveBackground, stats); });
    endStep();
}

void PaletteForm::moveIndex(int step)
{
    FloatSpinBox& spin = page().indexSpin();
    // A key that repeats goes on with its step.
    const QSignalBlocker blocker(spin);
    spin.setDoubleValue(spin.doubleValue() + step);
    page().showValues();
}

void PaletteForm::shiftByKey(int places)
{
    change([&](Palette& edited) { shiftCurves(edited, m_view, places); });
}

void PaletteForm::offsetByKey(double amount)
{
    change([&](Palette& edited) { offsetCurves(edited, m_view, amount); });
}

void PaletteForm::stepByKey(bool up)
{
    change([&](Palette& edited) { stepEntry(edited, m_view, page().index(), up); });
}

bool PaletteForm::isInSpinBox() const
{
    const QWidget* focus = QApplication::focusWidget();
    return focus != nullptr && isAncestorOf(focus) && qobject_cast<const QAbstractSpinBox*>(focus) != nullptr;
}

bool PaletteForm::triggerShortcut(const QKeyEvent& event)
{
    const QKeySequence pressed(event.key() | static_cast<int>(event.modifiers()));
    for (QAction* action : m_menu->actions()) {
        if (!action->shortcut().isEmpty() && action->shortcut() == pressed) {
            if (event.type() == QEvent::KeyPress)
                action->trigger();
            return true;
        }
    }
    return false;
}

/// The keys that stand in the menu belong to the form while it has the focus, whatever the main window does
/// with them.
bool PaletteForm::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && triggerShortcut(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return ToolForm::event(event);
}

void PaletteForm::keyPressEvent(QKeyEvent* event)
{
    struct KeyRow
    {
        int key;
        bool shift;
        std::function<void()> act;
    };
    const auto toggle = [this](std::size_t curve) {
        return [this, curve] { m_pages[0]->editBox(curve).click(); };
    };
    const KeyRow rows[] = {
        {Qt::Key_Left, true, [this] { shiftByKey(-1), moveIndex(-1); }},
        {Qt::Key_Left, false, [this] { moveIndex(-1); }},
        {Qt::Key_Right, true, [this] { shiftByKey(1), moveIndex(1); }},
        {Qt::Key_Right, false, [this] { moveIndex(1); }},
        {Qt::Key_Up, true, [this] { offsetByKey(1); }},
        {Qt::Key_Up, false, [this] { stepByKey(true); }},
        {Qt::Key_Down, true, [this] { offsetByKey(-1); }},
        {Qt::Key_Down, false, [this] { stepByKey(false); }},
    };
    const std::pair<int, std::function<void()>> letters[] = {
        {Qt::Key_F1, [this] { services().help("palette.html"); }},
        {Qt::Key_R, toggle(0)},
        {Qt::Key_G, toggle(1)},
        {Qt::Key_B, toggle(2)},
        {Qt::Key_A, toggle(3)},
        {Qt::Key_H, [this] { equalize(); }},
    };
    if (triggerShortcut(*event))
        return;
    const Qt::KeyboardModifiers held =
        event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
    const bool isPlain = !(held & ~Qt::KeyboardModifiers(Qt::ShiftModifier));
    if (isInSpinBox() || !isPlain || event->key() == Qt::Key_Escape) {
        ToolForm::keyPressEvent(event);
        return;
    }
    if (!event->isAutoRepeat())
        endStep();
    for (const KeyRow& row : rows) {
        if (row.key == event->key() && row.shift == (held == Qt::ShiftModifier)) {
            row.act();
            return;
        }
    }
    for (const auto& [key, act] : letters) {
        if (key == event->key()) {
            act();
            return;
        }
    }
    passToPicture(*event);
}

/// The keys of the picture work from here, too.
void PaletteForm::passToPicture(QKeyEvent& event)
{
    const auto* mainWindow = qobject_cast<QMainWindow*>(frame()->parentWidget());
    const auto* stack =
        mainWindow != nullptr ? qobject_cast<QStackedWidget*>(mainWindow->centralWidget()) : nullptr;
    if (stack != nullptr && stack->currentWidget() != nullptr)
        QApplication::sendEvent(stack->currentWidget(), &event);
    else
        ToolForm::keyPressEvent(&event);
}

} // namespace tirn
