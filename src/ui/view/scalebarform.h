#pragma once

#include <QDialog>

#include "scene/viewstate.h"
#include "ui/formservices.h"

class QButtonGroup;
class QCheckBox;
class QLabel;

namespace tirn {

class ColourButton;
class FloatSpinBox;

/// Where and how the scale bar is drawn. The picture follows while it is open; Cancel brings back what was
/// there.
class ScaleBarForm : public QDialog
{
    Q_OBJECT

public:
    ScaleBarForm(const FormServices& services, QWidget* parent);

    QColor getColor() const;
    double getSize() const;

public Q_SLOTS:
    /// Asks for the colour of the bar.
    void changeColor();
    void done(int result) override;

private:
    void buildLayout();
    void showBar();
    void change(const std::function<void(ViewState&)>& change);

    SceneModel& m_model;
    ViewState m_before;
    QButtonGroup* m_location;
    ColourButton* m_color;
    FloatSpinBox* m_size;
    QCheckBox* m_round;
    QLabel* m_length;
};

} // namespace tirn
