#pragma once

#include <array>

#include "ui/toolform.h"
#include "volume/cutslices.h"

class QGroupBox;
class QPushButton;
class QSlider;
class QSpinBox;

namespace tirn {

/// Cuts the volume with two sliders an axis, whose numbers are those of the file, and holds at least so many
/// slices between them as a box says. While it is shown, the cut box has handles in the picture, too.
class CutPlanesForm : public ToolForm
{
    Q_OBJECT

public:
    CutPlanesForm(const FormServices& services, QWidget* parent);

    void saveSession(QDomElement& element) const override;
    void loadSession(const QDomElement& element) override;

public Q_SLOTS:
    /// Shows the cut box of the current volume.
    void checkForStack();
    void checkXmin(int slice) { moveLow(0, slice); }
    void checkXMax(int slice) { moveHigh(0, slice); }
    void checkYMin(int slice) { moveLow(1, slice); }
    void checkYMax(int slice) { moveHigh(1, slice); }
    void checkZMin(int slice) { moveLow(2, slice); }
    void checkZMax(int slice) { moveHigh(2, slice); }
    void XIntervalChanged(int slices) { takeInterval(0, slices); }
    void YIntervalChanged(int slices) { takeInterval(1, slices); }
    void ZIntervalChanged(int slices) { takeInterval(2, slices); }

Q_SIGNALS:
    /// Another part of the volume is drawn, whoever cut it; once for a drag, at its end. Only while the form
    /// is shown.
    void renderAreaChanged();

protected:
    void refresh(Changes changes) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    /// The widgets of one axis.
    struct AxisWidgets
    {
        QGroupBox* group = nullptr;
        QSlider* low = nullptr;
        QSlider* high = nullptr;
        /// The numbers beside the sliders, which may be typed over.
        QSpinBox* lowNumber = nullptr;
        QSpinBox* highNumber = nullptr;
        QSpinBox* interval = nullptr;
    };

    void buildAxis(int axis, const QString& title, const QString& intervalText);
    void connectSlots();
    QSlider* slider(const QString& name);
    void moveLow(int axis, int slice);
    void moveHigh(int axis, int slice);
    void takeInterval(int axis, int slices);
    void cut(int axis, const SliceRange& range, bool movesLow, bool movesHigh);
    void showWholeStack();
    void change(const SceneModel::Edit& edit);
    void press();
    void release();
    void showCut(bool keepsNumbers);
    void showAxis(int axis, bool keepsNumbers);
    void setLimits(int axis);
    void setSliders(int axis, const SliceRange& range);
    SliceRange sliders(int axis) const;
    FileAxis fileAxis(int axis) const;
    void setHandles(bool shown);

    std::array<AxisWidgets, 3> m_axes;
    QPushButton* m_reset = nullptr;
    /// What the edits of a drag have in common; 0 between drags.
    int m_gesture = 0;
    bool m_isChangeHeldBack = false;
};

} // namespace tirn
