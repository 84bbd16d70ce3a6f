#pragma once

#include "scene/viewsession.h"
#include "ui/toolform.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QPushButton;
class QSpinBox;

namespace tirn {

class AxisBoxes;
class ColourButton;

/// Size of the window, pose of the volume, and colours.
class ViewForm : public ToolForm
{
    Q_OBJECT

public:
    ViewForm(const FormServices& services, QWidget* parent);

    void saveSession(QDomElement& element) const override;
    void loadSession(const QDomElement& element) override;

public Q_SLOTS:
    // Each shows what has changed, and sends nothing.
    void WindowDimensionsChanged(int width, int height);
    /// Stores the scale in the current volume, too.
    void scaleChanged(double x, double y, double z);
    void translationChanged(double x, double y, double z);
    void rotationChanged(double x, double y, double z);
    /// Opens the form of the scale bar.
    void changeScaleBar();

Q_SIGNALS:
    // What the user chooses here, and nobody else.
    void changeWindowDimensions(int width, int height);
    void toggleWindowAspectRatio(bool on);
    void toggleScaleAspectRatio(bool on);
    void changeVoxelScale(double x, double y, double z);
    void changeVoxelTranslation(double x, double y, double z);
    void changeVoxelRotation(double x, double y, double z);
    void showBoundingBox(bool on);
    void showScaleBar(bool on);

protected:
    void refresh(Changes changes) override;

private:
    QWidget* buildWindow();
    QWidget* buildScale();
    QWidget* buildRotation();
    QWidget* buildTranslation();
    QWidget* buildLook();
    QSpinBox* sideBox(const char* name, const QString& toolTip);
    QCheckBox* check(const char* name, const QString& text, const QString& toolTip);
    AxisBoxes* axisBoxes(AxisBoxes* boxes);

    void changeView(const QString& text, Changes changes, const SceneModel::Edit& edit);
    void chooseScale(const std::function<void(VoxelArray&)>& choose);
    void chooseRotation(const Vector3& angles);
    void chooseTranslation(const Vector3& place);
    void rotateAxis(int axis, double value);
    void translateAxis(int axis, double value);
    void chooseSize();
    void showPose(const ViewState& view);
    void showScale();
    void showLook(const ViewState& view);

    QSpinBox* m_width;
    QSpinBox* m_height;
    QCheckBox* m_preserveWindow;
    QGroupBox* m_scaleGroup;
    AxisBoxes* m_scale;
    QCheckBox* m_preserveScale;
    AxisBoxes* m_rotation;
    QComboBox* m_rotationMode;
    QComboBox* m_plane;
    AxisBoxes* m_translation;
    QCheckBox* m_showBox;
    ColourButton* m_boxColour;
    QCheckBox* m_showBar;
    QPushButton* m_bar;
    ColourButton* m_background;
    QComboBox* m_vision;
    int m_gesture;
};

} // namespace tirn
