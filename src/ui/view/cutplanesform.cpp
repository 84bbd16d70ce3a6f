#include "ui/view/cutplanesform.h"

#include <list>

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

namespace tirn {

namespace {

constexpr int kMostAtFirst = 99;
/// Fewer slices than these are not cut.
constexpr int kLeastSlices = 3;
constexpr int kSliderLength = 180;
constexpr int kNumberDigits = 4;
const char* const kAxisNames[] = {"X", "Y", "Z"};
const char* const kAttributes[] = {"x", "y", "z"};

/// A number that is taken once it is typed to its end. What is too large or too small becomes the nearest
/// one, where the toolkit would drop the digit that makes it so.
class NumberBox : public QSpinBox
{
public:
    NumberBox(const QString& name, int digits, QWidget* parent) : QSpinBox(parent), m_digits(digits)
    {
        setObjectName(name);
        setKeyboardTracking(false);
    }

protected:
    QString textFromValue(int value) const override { return QString::asprintf("%.*d", m_digits, value); }
    QValidator::State validate(QString& text, int& position) const override
    {
        const QValidator::State state = QSpinBox::validate(text, position);
        const bool mayBecomeOne = isNumber(text) || text == "-";
        return state == QValidator::Invalid && mayBecomeOne ? QValidator::Intermediate : state;
    }
    void fixup(QString& text) const override
    {
        if (isNumber(text))
            text =
                textFromValue(static_cast<int>(std::clamp<qint64>(text.toLongLong(), minimum(), maximum())));
        else
            QSpinBox::fixup(text);
    }

private:
    static bool isNumber(const QString& text)
    {
        bool isNumber = false;
        text.toLongLong(&isNumber);
        return isNumber;
    }

    int m_digits;
};

/// Keeps several widgets silent while it lives.
class Silenced
{
public:
    Silenced(std::initializer_list<QObject*> widgets)
    {
        for (QObject* each : widgets)
            m_blockers.emplace_back(each);
    }

private:
    std::list<QSignalBlocker> m_blockers;
};

} // namespace

CutPlanesForm::CutPlanesForm(const FormServices& services, QWidget* parent)
    : ToolForm(services, Change::Stacks | Change::Voxels | Change::Cut | Change::Look, parent)
{
    setWindowTitle(tr("Cut Planes"));
    buildAxis(0, tr("X Axis"), tr("Min slices"));
    buildAxis(1, tr("Y Axis"), tr("Min slices"));
    buildAxis(2, tr("Z Axis"), tr("Min Slices"));
    m_reset = new QPushButton(tr("Reset"), this);
    m_reset->setObjectName("btnReset");
    m_reset->setToolTip(tr("Show the whole stack again."));
    // Enter takes a number that was typed.
    m_reset->setAutoDefault(false);
    auto* layout = new QVBoxLayout(this);
    for (const AxisWidgets& each : m_axes)
        layout->addWidget(each.group);
    layout->addStretch(1);
    layout->addWidget(m_reset, 0, Qt::AlignRight);
    connectSlots();
    setEnabled(false);
}

void CutPlanesForm::buildAxis(int axis, const QString& title, const QString& intervalText)
{
    AxisWidgets& widgets = m_axes[static_cast<std::size_t>(axis)];
    const QString name = kAxisNames[axis];
    widgets.group = new QGroupBox(title, this);
    widgets.group->setObjectName("grp" + name);
    auto* rows = new QGridLayout(widgets.group);
    const auto add = [&](int row, const QString& text, const QString& end, QSlider*& slider,
                         QSpinBox*& number) {
        slider = this->slider("sld" + name + end);
        number = new NumberBox("spn" + name + end, kNumberDigits, this);
        // Until there is a stack.
        number->setSpecialValueText("000");
        auto* label = new QLabel(text, this);
        label->setBuddy(number);
        rows->addWidget(label, row, 0);
        rows->addWidget(slider, row, 1);
        rows->addWidget(number, row, 2);
    };
    add(0, tr("Minimum"), "Min", widgets.low, widgets.lowNumber);
    add(1, tr("Maximum"), "Max", widgets.high, widgets.highNumber);
    widgets.interval = new NumberBox("spn" + name + "Interval", 1, this);
    widgets.interval->setRange(1, kMostAtFirst);
    widgets.interval->setToolTip(tr("The sliders stay at least so many slices apart."));
    auto* label = new QLabel(intervalText, this);
    label->setBuddy(widgets.interval);
    rows->addWidget(label, 2, 0);
    rows->addWidget(widgets.interval, 2, 2);
    rows->setColumnStretch(1, 1);
}

QSlider* CutPlanesForm::slider(const QString& name)
{
    auto* made = new QSlider(Qt::Horizontal, this);
    made->setObjectName(name);
    made->setMinimumWidth(kSliderLength);
    connect(made, &QSlider::sliderPressed, this, &CutPlanesForm::press);
    connect(made, &QSlider::sliderReleased, this, &CutPlanesForm::release);
    return made;
}

void CutPlanesForm::connectSlots()
{
    using Slot = void (CutPlanesForm::*)(int);
    struct AxisSlots
    {
        Slot low;
        Slot high;
        Slot interval;
    };
    const AxisSlots axes[] = {
        {&CutPlanesForm::checkXmin, &CutPlanesForm::checkXMax, &CutPlanesForm::XIntervalChanged},
        {&CutPlanesForm::checkYMin, &CutPlanesForm::checkYMax, &CutPlanesForm::YIntervalChanged},
        {&CutPlanesForm::checkZMin, &CutPlanesForm::checkZMax, &CutPlanesForm::ZIntervalChanged}};
    const auto changed = qOverload<int>(&QSpinBox::valueChanged);
    for (std::size_t i = 0; i < m_axes.size(); ++i) {
        connect(m_axes[i].low, &QSlider::valueChanged, this, axes[i].low);
        connect(m_axes[i].high, &QSlider::valueChanged, this, axes[i].high);
        connect(m_axes[i].lowNumber, changed, this, axes[i].low);
        connect(m_axes[i].highNumber, changed, this, axes[i].high);
        connect(m_axes[i].interval, changed, this, axes[i].interval);
    }
    connect(m_reset, &QPushButton::clicked, this, &CutPlanesForm::showWholeStack);
}

FileAxis CutPlanesForm::fileAxis(int axis) const { return fileAxisOf(*scene().current(), axis); }

SliceRange CutPlanesForm::sliders(int axis) const
{
    const AxisWidgets& widgets = m_axes[static_cast<std::size_t>(axis)];
    return {widgets.low->value(), widgets.high->value()};
}

void CutPlanesForm::moveLow(int axis, int slice)
{
    if (scene().current() == nullptr)
        return;
    const SliceRange before = sliders(axis);
    const int interval = m_axes[static_cast<std::size_t>(axis)].interval->value();
    const SliceRange range = withLow(before, slice, interval, fileAxis(axis).limits());
    cut(axis, range, true, range.high != before.high);
}

void CutPlanesForm::moveHigh(int axis, int slice)
{
    if (scene().current() == nullptr)
        return;
    const SliceRange before = sliders(axis);
    const int interval = m_axes[static_cast<std::size_t>(axis)].interval->value();
    const SliceRange range = withHigh(before, slice, interval, fileAxis(axis).limits());
    cut(axis, range, range.low != before.low, true);
}

void CutPlanesForm::takeInterval(int axis, int /*slices*/)
{
    if (scene().current() == nullptr)
        return;
    setLimits(axis);
    setHandles(scene().view.cutHandles.shown);
    moveHigh(axis, sliders(axis).high);
}

/// Shows the range and cuts at the bounds that move. A bound that stays keeps its slice, which may lie
/// between those that the sliders have numbers for.
void CutPlanesForm::cut(int axis, const SliceRange& range, bool movesLow, bool movesHigh)
{
    setSliders(axis, range);
    const FileAxis file = fileAxis(axis);
    change([&](Scene& shown) {
        CutBox& box = shown.current()->cut;
        SliceRange quads = cutRange(box, axis);
        if (movesLow)
            quads.low = fileToQuad(range.low, file);
        if (movesHigh)
            quads.high = fileToQuad(range.high, file);
        setCutRange(box, axis, quads);
    });
}

void CutPlanesForm::showWholeStack()
{
    if (scene().current() != nullptr)
        change([](Scene& shown) { shown.current()->resetCut(); });
}

void CutPlanesForm::change(const SceneModel::Edit& edit)
{
    services().model.editUndoably(tr("cut planes"), m_gesture, Change::Cut, edit);
}

void CutPlanesForm::press()
{
    m_gesture = services().model.newGesture();
    edit(Change::Look, [](Scene& shown) { shown.view.drawCutBox = true; });
}

void CutPlanesForm::release()
{
    m_gesture = 0;
    edit(Change::Look, [](Scene& shown) { shown.view.drawCutBox = false; });
}

void CutPlanesForm::refresh(Changes changes)
{
    if (changes & (Change::Stacks | Change::Voxels)) {
        checkForStack();
        return;
    }
    if (changes & Change::Cut) {
        showCut(true);
        m_isChangeHeldBack = true;
    }
    // The outline stands while a slider, or a handle in the picture, is held.
    if (!scene().view.drawCutBox && std::exchange(m_isChangeHeldBack, false))
        Q_EMIT renderAreaChanged();
}

void CutPlanesForm::checkForStack()
{
    setEnabled(scene().current() != nullptr);
    showCut(false);
    setHandles(scene().view.cutHandles.shown);
}

void CutPlanesForm::showCut(bool keepsNumbers)
{
    for (int axis = 0; axis < 3 && scene().current() != nullptr; ++axis)
        showAxis(axis, keepsNumbers);
}

/// With `keepsNumbers` a slider that says the same already stays where the user has put it.
void CutPlanesForm::showAxis(int axis, bool keepsNumbers)
{
    const AxisWidgets& widgets = m_axes[static_cast<std::size_t>(axis)];
    const FileAxis file = fileAxis(axis);
    setLimits(axis);
    widgets.group->setEnabled(file.drawn >= kLeastSlices);
    const SliceRange quads = cutRange(scene().current()->cut, axis);
    const SliceRange shown = sliders(axis);
    const SliceRange wanted = fileRangeOf(quads, file);
    const auto numberOf = [&](int number, int quad, int instead) {
        return keepsNumbers && fileToQuad(number, file) == quad ? number : instead;
    };
    setSliders(axis,
               {numberOf(shown.low, quads.low, wanted.low), numberOf(shown.high, quads.high, wanted.high)});
}

/// How far sliders and boxes go.
void CutPlanesForm::setLimits(int axis)
{
    const AxisWidgets& widgets = m_axes[static_cast<std::size_t>(axis)];
    const FileAxis file = fileAxis(axis);
    const Silenced silenced = {widgets.low, widgets.high, widgets.lowNumber, widgets.highNumber,
                               widgets.interval};
    widgets.interval->setRange(1, std::max(1, file.slices - 1));
    const int apart = widgets.interval->value() - 1;
    widgets.low->setRange(file.first, std::max(file.first, file.last - apart));
    widgets.high->setRange(std::min(file.last, file.first + apart), file.last);
    for (QSlider* each : {widgets.low, widgets.high}) {
        each->setSingleStep(file.unit());
        each->setPageStep(std::max(1, file.slices / 10) * file.unit());
    }
    for (QSpinBox* each : {widgets.lowNumber, widgets.highNumber}) {
        each->setSpecialValueText({});
        each->setSingleStep(file.unit());
    }
    widgets.lowNumber->setRange(widgets.low->minimum(), widgets.low->maximum());
    widgets.highNumber->setRange(widgets.high->minimum(), widgets.high->maximum());
}

void CutPlanesForm::setSliders(int axis, const SliceRange& range)
{
    const AxisWidgets& widgets = m_axes[static_cast<std::size_t>(axis)];
    const Silenced silenced = {widgets.low, widgets.high, widgets.lowNumber, widgets.highNumber};
    widgets.low->setValue(range.low);
    widgets.high->setValue(range.high);
    widgets.lowNumber->setValue(range.low);
    widgets.highNumber->setValue(range.high);
}

/// Asks for a frame without telling of a change: a form that comes up changes nothing that is kept.
void CutPlanesForm::setHandles(bool shown)
{
    CutHandles handles;
    handles.shown = shown;
    for (int axis = 0; axis < 3 && scene().current() != nullptr; ++axis)
        handles.leastSlices[static_cast<std::size_t>(axis)] =
            quadsOf(m_axes[static_cast<std::size_t>(axis)].interval->value(), fileAxis(axis));
    edit({}, [&](Scene& scene) { scene.view.cutHandles = handles; });
    services().model.redraw();
}

void CutPlanesForm::showEvent(QShowEvent* event)
{
    ToolForm::showEvent(event);
    setHandles(true);
}

void CutPlanesForm::hideEvent(QHideEvent* event)
{
    // A slider that was held when the form went is held no longer.
    if (m_gesture != 0)
        release();
    setHandles(false);
    ToolForm::hideEvent(event);
}

void CutPlanesForm::saveSession(QDomElement& element) const
{
    QDomElement intervals = element.ownerDocument().createElement("minslices");
    for (std::size_t i = 0; i < m_axes.size(); ++i)
        intervals.setAttribute(kAttributes[i], m_axes[i].interval->value());
    element.appendChild(intervals);
}

void CutPlanesForm::loadSession(const QDomElement& element)
{
    checkForStack();
    const QDomElement intervals = element.firstChildElement("minslices");
    for (std::size_t i = 0; i < m_axes.size(); ++i) {
        bool isNumber = false;
        const int interval = intervals.attribute(kAttributes[i]).toInt(&isNumber);
        const QSignalBlocker blocker(m_axes[i].interval);
        if (isNumber)
            m_axes[i].interval->setValue(interval);
    }
    checkForStack();
    setHandles(scene().view.cutHandles.shown);
}

} // namespace tirn
