#include "ui/view/lightingform.h"

#include <algorithm>

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "ui/widgets/floatspinbox.h"

namespace tirn {

namespace {

constexpr std::array<const char*, 4> kParts = {"Red", "Green", "Blue", "Alpha"};
constexpr std::array<const char*, 3> kAxes = {"X", "Y", "Z"};
/// How far away the light may stand, in drawing units, and the largest numbers that the card takes.
constexpr double kFarthest = 100;
constexpr double kMostAttenuation = 100;
constexpr double kMostShininess = 128;

template <auto Member, class Record>
float& partOf(Record& record, std::size_t index)
{
    return (record.*Member)[index];
}

template <auto Member, class Record>
float& numberOf(Record& record, std::size_t /*index*/)
{
    return record.*Member;
}

void addHeads(QGridLayout* grid, const auto& heads)
{
    const int row = grid->rowCount();
    int column = 1;
    for (const char* head : heads)
        grid->addWidget(new QLabel(LightingForm::tr(head)), row, column++);
}

/// A label and boxes in the next row.
void addRow(QGridLayout* grid, const QString& text, const std::vector<FloatSpinBox*>& boxes)
{
    const int row = grid->rowCount();
    grid->addWidget(new QLabel(text), row, 0);
    int column = 1;
    for (FloatSpinBox* box : boxes)
        grid->addWidget(box, row, column++);
}

template <class Fields, class Record>
void toBoxes(const Fields& fields, Record record)
{
    for (const auto& field : fields) {
        const QSignalBlocker blocker(field.box);
        const double number = static_cast<double>(field.value(record, field.index));
        if (!field.box->isBeingTyped() && field.box->doubleValue() != number)
            field.box->setDoubleValue(number);
    }
}

template <class Fields, class Record>
void fromBoxes(const Fields& fields, Record& record)
{
    for (const auto& field : fields)
        field.value(record, field.index) = static_cast<float>(field.box->doubleValue());
}

} // namespace

LightingForm::LightingForm(const FormServices& services, QWidget* parent)
    : ToolForm(services, Change::Look | Change::Stacks, parent), m_gesture(services.model.newGesture())
{
    setWindowTitle(tr("Lighting Model"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buildLight());
    layout->addWidget(buildMaterial());
    layout->addStretch(1);
    alignColumns();
}

/// Numbers below each other stand in boxes of one width.
void LightingForm::alignColumns()
{
    int widest = 0;
    const QList<FloatSpinBox*> boxes = findChildren<FloatSpinBox*>();
    for (const FloatSpinBox* each : boxes)
        widest = std::max(widest, each->sizeHint().width());
    for (FloatSpinBox* each : boxes)
        each->setMinimumWidth(widest);
}

FloatSpinBox* LightingForm::box(const QString& name, double least, double most, void (LightingForm::*slot)())
{
    auto* made = new FloatSpinBox(this);
    made->setObjectName("spn" + name);
    made->setDoubleLineStep(0.01);
    made->setDoubleRange(least, most);
    made->setSingleStep(5);
    made->setKeyboardTracking(false);
    connect(made, &FloatSpinBox::doubleValueChanged, this, slot);
    connect(made, &FloatSpinBox::editingFinished, this,
            [this] { m_gesture = services().model.newGesture(); });
    return made;
}

template <class Record>
void LightingForm::addColour(QGridLayout* grid, const QString& text, const QString& name,
                             float& (*value)(Record&, std::size_t), Fields<Record>& fields,
                             void (LightingForm::*slot)())
{
    std::vector<FloatSpinBox*> boxes;
    for (std::size_t part = 0; part < kParts.size(); ++part) {
        boxes.push_back(box(name + kParts[part], 0, 1, slot));
        fields.push_back({boxes.back(), value, part});
    }
    addRow(grid, text, boxes);
}

QWidget* LightingForm::buildLight()
{
    auto* group = new QGroupBox(tr("Light"), this);
    auto* grid = new QGridLayout(group);
    addHeads(grid, kParts);
    const auto slot = &LightingForm::lightUpdated;
    addColour<Light>(grid, tr("Ambient"), "LightAmbient", partOf<&Light::ambient, Light>, m_light, slot);
    addColour<Light>(grid, tr("Diffuse"), "LightDiffuse", partOf<&Light::diffuse, Light>, m_light, slot);
    addColour<Light>(grid, tr("Specular"), "LightSpecular", partOf<&Light::specular, Light>, m_light, slot);
    for (const Field<Light>& colour : m_light)
        colour.box->setToolTip(tr("The colors of the light change nothing in the picture."));
    addHeads(grid, kAxes);
    std::vector<FloatSpinBox*> position;
    for (std::size_t axis = 0; axis < kAxes.size(); ++axis) {
        position.push_back(box(QString("LightPos") + kAxes[axis], -kFarthest, kFarthest, slot));
        m_light.push_back({position.back(), partOf<&Light::position, Light>, axis});
    }
    addRow(grid, tr("Position"), position);
    FloatSpinBox* attenuation = box("LightAttenuation", 0, kMostAttenuation, slot);
    m_light.push_back({attenuation, numberOf<&Light::attenuation, Light>, 0});
    addRow(grid, tr("Attenuation"), {attenuation});
    return group;
}

QWidget* LightingForm::buildMaterial()
{
    m_materialGroup = new QGroupBox(tr("Material"), this);
    auto* grid = new QGridLayout(m_materialGroup);
    addHeads(grid, kParts);
    const auto slot = &LightingForm::materialUpdated;
    addColour<Material>(grid, tr("Ambient"), "MatAmbient", partOf<&Material::ambientAndDiffuse, Material>,
                        m_material, slot);
    addColour<Material>(grid, tr("Specular"), "MatSpecular", partOf<&Material::specular, Material>,
                        m_material, slot);
    addColour<Material>(grid, tr("Emision"), "MatEmission", partOf<&Material::emission, Material>, m_material,
                        slot);
    FloatSpinBox* shininess = box("MatShininess", 0, kMostShininess, slot);
    m_material.push_back({shininess, numberOf<&Material::shininess, Material>, 0});
    addRow(grid, tr("Shininess"), {shininess});
    return m_materialGroup;
}

void LightingForm::lightUpdated()
{
    services().model.editUndoably(tr("light"), m_gesture, Change::Look,
                                  [this](Scene& scene) { fromBoxes(m_light, scene.light); });
}

void LightingForm::materialUpdated()
{
    if (scene().segmentations.empty())
        return;
    services().model.editUndoably(tr("material"), m_gesture, Change::Look, [this](Scene& scene) {
        fromBoxes(m_material, scene.segmentations.front()->material);
    });
}

void LightingForm::stackChanged() { toBoxes(m_light, scene().light); }

void LightingForm::segmentationChanged()
{
    m_materialGroup->setEnabled(!scene().segmentations.empty());
    if (!scene().segmentations.empty())
        toBoxes(m_material, scene().segmentations.front()->material);
}

void LightingForm::refresh(Changes /*changes*/)
{
    stackChanged();
    segmentationChanged();
}

} // namespace tirn
