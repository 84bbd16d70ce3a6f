#pragma once

#include <QDialog>

namespace tirn {

class FloatSpinBox;

/// Asks for the size of a voxel, in microns; 0 stands for unknown.
class StackDimensionsForm : public QDialog
{
    Q_OBJECT

public:
    explicit StackDimensionsForm(QWidget* parent);

    double getX() const;
    double getY() const;
    double getZ() const;

public Q_SLOTS:
    void setDimensions(double x, double y, double z);

private:
    FloatSpinBox* spinBox(const char* name);

    FloatSpinBox* m_x;
    FloatSpinBox* m_y;
    FloatSpinBox* m_z;
};

} // namespace tirn
