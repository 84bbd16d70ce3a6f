#include "ui/view/axisboxes.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>

#include "scene/viewstate.h"
#include "ui/widgets/floatspinbox.h"

namespace tirn {

namespace {

constexpr std::array<const char*, 3> kAxes = {"X", "Y", "Z"};

/// A step beyond the full turn goes on from 0.
class AngleBox : public FloatSpinBox
{
public:
    explicit AngleBox(QWidget* parent) : FloatSpinBox(parent) { setWrapping(true); }

    void stepBy(int steps) override
    {
        interpretText();
        setDoubleValue(wrapDegrees(doubleValue() + steps * singleStep() * doubleLineStep()));
        selectAll();
    }
};

} // namespace

AxisBoxes::AxisBoxes(const Look& look, QWidget* parent) : QWidget(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    for (std::size_t axis = 0; axis < m_boxes.size(); ++axis) {
        FloatSpinBox* box = look.isAngle ? new AngleBox(this) : new FloatSpinBox(this);
        m_boxes[axis] = box;
        box->setObjectName("fspn" + look.name + kAxes[axis]);
        box->setDoubleLineStep(look.step);
        box->setDoubleRange(look.minimum, look.maximum);
        box->setSingleStep(look.steps);
        box->setSuffix(look.suffix);
        box->setKeyboardTracking(false);
        box->setToolTip(look.toolTips[axis]);
        box->installEventFilter(this);
        auto* label = new QLabel(kAxes[axis], this);
        label->setBuddy(box);
        row->addWidget(label);
        row->addWidget(box, 1);
        connect(box, &FloatSpinBox::doubleValueChanged, this,
                [this, axis](double value) { Q_EMIT valueChosen(static_cast<int>(axis), value); });
        connect(box, &FloatSpinBox::editingFinished, this, &AxisBoxes::letGo);
    }
    auto* reset = new QPushButton(tr("Reset"), this);
    reset->setObjectName("btnReset" + look.name);
    reset->setToolTip(look.resetToolTip);
    reset->setAutoDefault(false);
    row->addWidget(reset);
    connect(reset, &QPushButton::clicked, this, &AxisBoxes::resetRequested);
}

void AxisBoxes::setValues(const Vector3& values)
{
    const std::array<double, 3> numbers = {values.x, values.y, values.z};
    for (std::size_t axis = 0; axis < m_boxes.size(); ++axis) {
        FloatSpinBox* box = m_boxes[axis];
        const QSignalBlocker blocker(box);
        if (!box->isBeingTyped() && box->doubleValue() != numbers[axis])
            box->setDoubleValue(numbers[axis]);
    }
}

Vector3 AxisBoxes::values() const
{
    return {m_boxes[0]->doubleValue(), m_boxes[1]->doubleValue(), m_boxes[2]->doubleValue()};
}

bool AxisBoxes::eventFilter(QObject* watched, QEvent* event)
{
    const bool isKey = event->type() == QEvent::KeyRelease;
    if (event->type() == QEvent::MouseButtonRelease ||
        (isKey && !static_cast<const QKeyEvent*>(event)->isAutoRepeat()))
        Q_EMIT letGo();
    return QWidget::eventFilter(watched, event);
}

} // namespace tirn
