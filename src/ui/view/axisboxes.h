#pragma once

#include <array>

#include <QWidget>

#include "scene/camera.h"

class QPushButton;

namespace tirn {

class FloatSpinBox;

/// Three numbers, X, Y and Z, in one row, with a button that sets them back.
class AxisBoxes : public QWidget
{
    Q_OBJECT

public:
    struct Look
    {
        /// The boxes are called "fspn<name>X" and so on, the button "btnReset<name>".
        QString name;
        double minimum;
        double maximum;
        double step;
        /// How many steps an arrow takes.
        int steps = 1;
        QString suffix = {};
        /// From the last number an arrow leads to the first.
        bool isAngle = false;
        std::array<QString, 3> toolTips;
        QString resetToolTip;
    };
    AxisBoxes(const Look& look, QWidget* parent);

    /// Silent. A box in which the user is typing keeps the text.
    void setValues(const Vector3& values);
    Vector3 values() const;

Q_SIGNALS:
    void valueChosen(int axis, double value);
    /// The keys and the mouse are let go: what is chosen next is another change.
    void letGo();
    void resetRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::array<FloatSpinBox*, 3> m_boxes;
};

} // namespace tirn
