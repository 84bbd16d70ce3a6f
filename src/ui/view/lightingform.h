#pragma once

#include <array>
#include <vector>

#include "ui/toolform.h"

class QGridLayout;
class QGroupBox;

namespace tirn {

class FloatSpinBox;

/// The light and the material that a surface is drawn with.
class LightingForm : public ToolForm
{
    Q_OBJECT

public:
    LightingForm(const FormServices& services, QWidget* parent);

public Q_SLOTS:
    /// From the boxes to the material of the surface; nothing without one.
    void materialUpdated();
    /// From the boxes to the light.
    void lightUpdated();
    /// From the light to the boxes.
    void stackChanged();
    /// From the material of the surface to the boxes.
    void segmentationChanged();
    // Nothing follows from these.
    void changeBulb() {}
    void changeMaterial() {}

protected:
    void refresh(Changes changes) override;

private:
    /// A box and the number that it stands for.
    template <class Record>
    struct Field
    {
        FloatSpinBox* box;
        float& (*value)(Record&, std::size_t index);
        std::size_t index;
    };
    template <class Record>
    using Fields = std::vector<Field<Record>>;

    QWidget* buildLight();
    QWidget* buildMaterial();
    void alignColumns();
    FloatSpinBox* box(const QString& name, double least, double most, void (LightingForm::*slot)());
    template <class Record>
    void addColour(QGridLayout* grid, const QString& text, const QString& name,
                   float& (*value)(Record&, std::size_t), Fields<Record>& fields,
                   void (LightingForm::*slot)());

    QGroupBox* m_materialGroup = nullptr;
    Fields<Light> m_light;
    Fields<Material> m_material;
    int m_gesture;
};

} // namespace tirn
