#include "ui/view/viewform.h"

#include <new>

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include "base/log.h"
#include "scene/rotation.h"
#include "scene/sceneedits.h"
#include "ui/view/axisboxes.h"
#include "ui/view/scalebarform.h"
#include "ui/widgets/colourbutton.h"

namespace tirn {

namespace {

/// The least that a window shrinks to, and more than any screen has.
constexpr int kLeastSide = 128;
constexpr int kMostSide = 16384;
/// Items of the list of rotation modes.
constexpr int kQuaternion = 0;

Vector3 anglesIn(const ViewState& view) { return {view.rotX, view.rotY, view.rotZ}; }

Vector3 placeIn(const ViewState& view) { return {view.transX, view.transY, view.transZ}; }

double& part(Vector3& vector, int axis) { return axis == 0 ? vector.x : axis == 1 ? vector.y : vector.z; }

} // namespace

ViewForm::ViewForm(const FormServices& services, QWidget* parent)
    : ToolForm(services, Change::Pose | Change::Scale | Change::Look | Change::Stacks, parent),
      m_gesture(services.model.newGesture())
{
    setWindowTitle(tr("View"));
    auto* layout = new QVBoxLayout(this);
    for (QWidget* group : {buildWindow(), buildScale(), buildRotation(), buildTranslation(), buildLook()})
        layout->addWidget(group);
    layout->addStretch(1);
    services.window.whenResized(this,
                                [this](int width, int height) { WindowDimensionsChanged(width, height); });
    connect(this, &ViewForm::changeWindowDimensions, this,
            [this](int width, int height) { this->services().window.changeWindowDimensions(width, height); });
    connect(this, &ViewForm::toggleWindowAspectRatio, this,
            [this](bool on) { this->services().window.toggleWindowAspectRatio(on); });
}

QSpinBox* ViewForm::sideBox(const char* name, const QString& toolTip)
{
    auto* box = new QSpinBox(this);
    box->setObjectName(name);
    box->setRange(kLeastSide, kMostSide);
    box->setKeyboardTracking(false);
    box->setToolTip(toolTip);
    connect(box, qOverload<int>(&QSpinBox::valueChanged), this, &ViewForm::chooseSize);
    return box;
}

QCheckBox* ViewForm::check(const char* name, const QString& text, const QString& toolTip)
{
    auto* made = new QCheckBox(text, this);
    made->setObjectName(name);
    made->setToolTip(toolTip);
    return made;
}

AxisBoxes* ViewForm::axisBoxes(AxisBoxes* boxes)
{
    connect(boxes, &AxisBoxes::letGo, this, [this] {
        m_gesture = services().model.newGesture();
        // What was typed may not be what came of it.
        showPose(services().model.view());
        showScale();
    });
    return boxes;
}

QWidget* ViewForm::buildWindow()
{
    auto* group = new QGroupBox(tr("Window"), this);
    m_preserveWindow = check("chkPreserveWindow", tr("Preserve Aspect Ratio"),
                             tr("Preserve the relationship between width and height."));
    connect(m_preserveWindow, &QCheckBox::toggled, this, &ViewForm::toggleWindowAspectRatio);
    m_width = sideBox("spnWidth", tr("The width of the rendering window."));
    m_height = sideBox("spnHeight", tr("The height of the rendering window."));
    auto* sides = new QHBoxLayout;
    for (const auto& [text, box] : {std::pair(tr("Width"), m_width), std::pair(tr("Height"), m_height)}) {
        auto* label = new QLabel(text, group);
        label->setBuddy(box);
        sides->addWidget(label);
        sides->addWidget(box, 1);
    }
    auto* layout = new QVBoxLayout(group);
    layout->addWidget(m_preserveWindow);
    layout->addLayout(sides);
    return group;
}

QWidget* ViewForm::buildScale()
{
    m_scaleGroup = new QGroupBox(tr("Scale"), this);
    m_preserveScale = check("chkPreserveScale", tr("Preserve Aspect Ratio"),
                            tr("Preserve the relationship between the X, Y, and Z scalars."));
    connect(m_preserveScale, &QCheckBox::toggled, this, [this](bool on) {
        changeView(tr("scale ratio"), Change::Scale, [on](Scene& scene) {
            if (VoxelArray* array = scene.current())
                array->preserveScaleRatio = on;
        });
        Q_EMIT toggleScaleAspectRatio(on);
    });
    m_scale = axisBoxes(new AxisBoxes({.name = "Scale",
                                       .minimum = kLeastScale,
                                       .maximum = kMostScale,
                                       .step = 0.01,
                                       .toolTips = {tr("Scaling factor along the X axis of a volume."),
                                                    tr("Scaling factor along the Y axis of a volume."),
                                                    tr("Scaling factor along the Z axis of a volume.")},
                                       .resetToolTip = tr("The scale that loading gave.")},
                                      m_scaleGroup));
    connect(m_scale, &AxisBoxes::valueChosen, this, [this](int axis, double value) {
        chooseScale([=](VoxelArray& array) { setAxisScale(array, axis, value); });
    });
    connect(m_scale, &AxisBoxes::resetRequested, this,
            [this] { chooseScale([](VoxelArray& array) { array.scale = array.baseScale; }); });
    auto* layout = new QVBoxLayout(m_scaleGroup);
    layout->addWidget(m_preserveScale);
    layout->addWidget(m_scale);
    return m_scaleGroup;
}

QWidget* ViewForm::buildRotation()
{
    auto* group = new QGroupBox(tr("Rotation"), this);
    m_rotation = axisBoxes(
        new AxisBoxes({.name = "Rotation",
                       .minimum = 0,
                       .maximum = 360,
                       .step = 0.1,
                       .steps = 10,
                       .suffix = QString(QChar(0xb0)),
                       .isAngle = true,
                       .toolTips = {tr("Rotation around the X axis."), tr("Rotation around the Y axis."),
                                    tr("Rotation around the Z axis.")},
                       .resetToolTip = tr("No rotation.")},
                      group));
    connect(m_rotation, &AxisBoxes::valueChosen, this, &ViewForm::rotateAxis);
    connect(m_rotation, &AxisBoxes::resetRequested, this, [this] { chooseRotation({}); });
    m_rotationMode = new QComboBox(group);
    m_rotationMode->setObjectName("cboRotationMode");
    m_rotationMode->addItems({tr("Quaternion"), tr("Axis")});
    m_rotationMode->setToolTip(tr("Quaternion: a step turns about the axes of the screen.\n"
                                  "Axis: the numbers are the three angles."));
    connect(m_rotationMode, qOverload<int>(&QComboBox::activated), this,
            [this](int mode) { services().settings.rotationMode = mode; });
    m_plane = new QComboBox(group);
    m_plane->setObjectName("cboPlane");
    m_plane->addItems({"XY", "YZ", "XZ"});
    m_plane->setToolTip(tr("Turn this plane of the volume to the viewer."));
    connect(m_plane, qOverload<int>(&QComboBox::activated), this,
            [this](int item) { chooseRotation(anglesOf(static_cast<ViewPlane>(item))); });
    auto* choices = new QHBoxLayout;
    for (const auto& [text, combo] :
         {std::pair(tr("Mode"), m_rotationMode), std::pair(tr("Plane"), m_plane)}) {
        auto* label = new QLabel(text, group);
        label->setBuddy(combo);
        choices->addWidget(label);
        choices->addWidget(combo, 1);
    }
    auto* layout = new QVBoxLayout(group);
    layout->addWidget(m_rotation);
    layout->addLayout(choices);
    return group;
}

QWidget* ViewForm::buildTranslation()
{
    auto* group = new QGroupBox(tr("Translation"), this);
    // The tip of X stands on Z, too.
    m_translation =
        axisBoxes(new AxisBoxes({.name = "Translation",
                                 .minimum = -kMostTranslation,
                                 .maximum = kMostTranslation,
                                 .step = 0.01,
                                 .toolTips = {tr("Offset along the X axis."), tr("Offset along the Y axis."),
                                              tr("Offset along the X axis.")},
                                 .resetToolTip = tr("No translation.")},
                                group));
    connect(m_translation, &AxisBoxes::valueChosen, this, &ViewForm::translateAxis);
    connect(m_translation, &AxisBoxes::resetRequested, this, [this] { chooseTranslation({}); });
    auto* layout = new QVBoxLayout(group);
    layout->addWidget(m_translation);
    return group;
}

QWidget* ViewForm::buildLook()
{
    auto* group = new QWidget(this);
    m_showBox = check("chkBoundingBox", tr("Show"), tr("Show the box around the volume."));
    m_boxColour = new ColourButton(tr("Bounding Box"), tr("Bounding Box Color"), group);
    m_boxColour->setObjectName("btnBoundingBox");
    m_showBar = check("chkScaleBar", tr("Show"), tr("Show the scale bar."));
    m_bar = new QPushButton(tr("Scale Bar"), group);
    m_bar->setObjectName("btnScaleBar");
    m_bar->setAutoDefault(false);
    m_background = new ColourButton(tr("Background Color"), tr("Background Color"), group);
    m_background->setObjectName("btnBackgroundColor");
    connect(m_showBox, &QCheckBox::toggled, this, [this](bool on) {
        changeView(tr("bounding box"), Change::Look, [on](Scene& scene) { scene.view.showBoundingBox = on; });
        Q_EMIT showBoundingBox(on);
    });
    connect(m_showBar, &QCheckBox::toggled, this, [this](bool on) {
        changeView(tr("scale bar"), Change::Look, [on](Scene& scene) { scene.view.showScaleBar = on; });
        Q_EMIT showScaleBar(on);
    });
    connect(m_boxColour, &ColourButton::colourChosen, this, [this](const QColor& colour) {
        changeView(tr("bounding box color"), Change::Look,
                   [=](Scene& scene) { scene.view.boxColor = colour; });
    });
    connect(m_background, &ColourButton::colourChosen, this, [this](const QColor& colour) {
        changeView(tr("background color"), Change::Look,
                   [=](Scene& scene) { scene.view.backgroundColor = colour; });
    });
    connect(m_bar, &QPushButton::clicked, this, &ViewForm::changeScaleBar);
    auto* visionLabel = new QLabel(tr("Colour Vision"), group);
    m_vision = new QComboBox(group);
    m_vision->setObjectName("cboColorVision");
    for (const char* name : kColorVisionNames)
        m_vision->addItem(tr(name));
    m_vision->setToolTip(tr("Show the picture as people without red, green or blue cones see it."));
    visionLabel->setBuddy(m_vision);
    connect(m_vision, qOverload<int>(&QComboBox::currentIndexChanged), this, [this](int vision) {
        changeView(tr("colour vision"), Change::Look,
                   [=](Scene& scene) { scene.view.colorVision = static_cast<ColorVision>(vision); });
    });
    auto* layout = new QGridLayout(group);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_showBox, 0, 0);
    layout->addWidget(m_boxColour, 0, 1);
    layout->addWidget(m_showBar, 1, 0);
    layout->addWidget(m_bar, 1, 1);
    layout->addWidget(m_background, 2, 1);
    layout->addWidget(visionLabel, 3, 0);
    layout->addWidget(m_vision, 3, 1);
    layout->setColumnStretch(1, 1);
    return group;
}

/// Everything that is chosen before a key or button is let go is taken back as one.
void ViewForm::changeView(const QString& text, Changes changes, const SceneModel::Edit& edit)
{
    services().model.editUndoably(text, m_gesture, changes, edit);
}

void ViewForm::chooseScale(const std::function<void(VoxelArray&)>& choose)
{
    if (scene().current() == nullptr)
        return;
    changeView(tr("scale"), Change::Scale, [&](Scene& shown) { choose(*shown.current()); });
    const AxisScale& scale = scene().current()->scale;
    Q_EMIT changeVoxelScale(scale.x, scale.y, scale.z);
}

void ViewForm::chooseRotation(const Vector3& angles)
{
    changeView(tr("rotation"), Change::Pose, [&](Scene& scene) {
        scene.view.rotX = wrapDegrees(angles.x);
        scene.view.rotY = wrapDegrees(angles.y);
        scene.view.rotZ = wrapDegrees(angles.z);
    });
    const ViewState view = services().model.view();
    Q_EMIT changeVoxelRotation(view.rotX, view.rotY, view.rotZ);
}

void ViewForm::rotateAxis(int axis, double value)
{
    Vector3 angles = anglesIn(services().model.view());
    double& angle = part(angles, axis);
    if (m_rotationMode->currentIndex() == kQuaternion) {
        const double step = wrapDegrees(value - angle);
        angles = turnedAboutScreen(angles, axis, step > 180 ? step - 360 : step);
    } else {
        angle = value;
    }
    chooseRotation(angles);
}

void ViewForm::chooseTranslation(const Vector3& place)
{
    changeView(tr("translation"), Change::Pose, [&](Scene& scene) {
        scene.view.transX = place.x;
        scene.view.transY = place.y;
        scene.view.transZ = place.z;
    });
    Q_EMIT changeVoxelTranslation(place.x, place.y, place.z);
}

void ViewForm::translateAxis(int axis, double value)
{
    Vector3 place = placeIn(services().model.view());
    part(place, axis) = value;
    chooseTranslation(place);
}

void ViewForm::chooseSize() { Q_EMIT changeWindowDimensions(m_width->value(), m_height->value()); }

void ViewForm::changeScaleBar()
{
    try {
        auto* form = new ScaleBarForm(services(), this);
        form->setObjectName("Scale Bar");
        form->setAttribute(Qt::WA_DeleteOnClose);
        form->open();
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate scale bar form");
    }
}

void ViewForm::WindowDimensionsChanged(int width, int height)
{
    for (const auto& [box, side] : {std::pair(m_width, width), std::pair(m_height, height)}) {
        const QSignalBlocker blocker(box);
        if (box->value() != side)
            box->setValue(side);
    }
}

void ViewForm::scaleChanged(double x, double y, double z)
{
    const AxisScale scale = {x, y, z};
    const VoxelArray* array = scene().current();
    if (array != nullptr && !(array->scale == scale))
        edit(Change::Scale, [&](Scene& shown) { setScale(*shown.current(), scale); });
    m_scale->setValues({x, y, z});
}

void ViewForm::translationChanged(double x, double y, double z) { m_translation->setValues({x, y, z}); }

void ViewForm::rotationChanged(double x, double y, double z)
{
    m_rotation->setValues({x, y, z});
    const std::optional<ViewPlane> plane = planeAt({x, y, z});
    m_plane->setCurrentIndex(plane ? static_cast<int>(*plane) : -1);
}

void ViewForm::refresh(Changes changes)
{
    const ViewState view = services().model.view();
    if (changes & Change::Pose)
        showPose(view);
    if (changes & (Change::Scale | Change::Stacks))
        showScale();
    if (changes & Change::Look)
        showLook(view);
    // Nobody tells of the first size, and of the mode that was chosen in an earlier run.
    if (changes == kAllChanges) {
        const QSize size = services().window.pictureSize();
        WindowDimensionsChanged(size.width(), size.height());
        m_rotationMode->setCurrentIndex(services().settings.rotationMode);
    }
}

void ViewForm::showPose(const ViewState& view)
{
    rotationChanged(view.rotX, view.rotY, view.rotZ);
    translationChanged(view.transX, view.transY, view.transZ);
}

void ViewForm::showScale()
{
    const VoxelArray* array = scene().current();
    m_scaleGroup->setEnabled(array != nullptr);
    if (array == nullptr)
        return;
    m_scale->setValues({array->scale.x, array->scale.y, array->scale.z});
    const QSignalBlocker blocker(m_preserveScale);
    m_preserveScale->setChecked(array->preserveScaleRatio);
}

void ViewForm::showLook(const ViewState& view)
{
    m_showBox->setChecked(view.showBoundingBox);
    m_showBar->setChecked(view.showScaleBar);
    m_boxColour->setColour(view.boxColor);
    m_background->setColour(view.backgroundColor);
    m_vision->setCurrentIndex(static_cast<int>(view.colorVision));
}

void ViewForm::saveSession(QDomElement& element) const
{
    writeView(element, services().model.view(),
              {services().window.pictureSize(), m_preserveWindow->isChecked()});
}

void ViewForm::loadSession(const QDomElement& element)
{
    SessionWindow window = {services().window.pictureSize(), m_preserveWindow->isChecked()};
    edit(Change::Pose | Change::Look, [&](Scene& scene) { readView(element, scene.view, window); });
    // The size is taken before the ratio is kept, which is that of the size.
    m_preserveWindow->setChecked(false);
    if (window.size != services().window.pictureSize())
        Q_EMIT changeWindowDimensions(window.size.width(), window.size.height());
    m_preserveWindow->setChecked(window.preservesRatio);
}

} // namespace tirn
