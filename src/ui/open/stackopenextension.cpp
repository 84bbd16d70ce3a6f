#include "ui/open/stackopenextension.h"

#include <algorithm>

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "ui/widgets/floatspinbox.h"

namespace tirn {

namespace {

constexpr int kMostSubsampling = 8;
constexpr int kMostSlices = 4096;
/// Microns.
constexpr double kLargestVoxel = 10000;
constexpr double kVoxelStep = 0.00001;
/// An arrow changes a voxel by a hundredth of a micron.
constexpr int kVoxelArrow = 1000;

} // namespace

StackOpenExtension::StackOpenExtension(bool hasTexture3D, QWidget* parent) : QWidget(parent)
{
    setWindowTitle(tr("Details"));
    auto* columns = new QHBoxLayout;
    columns->addWidget(layerGroup(), 1);
    columns->addWidget(textureGroup(hasTexture3D), 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(columns);
    layout->addWidget(voxelGroup());
    reset();
}

QSpinBox* StackOpenExtension::spinBox(const char* name, int minimum, int maximum)
{
    auto* made = new QSpinBox(this);
    made->setObjectName(name);
    made->setRange(minimum, maximum);
    connect(made, qOverload<int>(&QSpinBox::valueChanged), this, &StackOpenExtension::calculateMemory);
    return made;
}

FloatSpinBox* StackOpenExtension::voxelBox(const char* name)
{
    auto* made = new FloatSpinBox(this);
    made->setObjectName(name);
    made->setDoubleLineStep(kVoxelStep);
    made->setDoubleRange(0, kLargestVoxel);
    made->setSingleStep(kVoxelArrow);
    made->setSuffix(QString::fromUtf8(" \xC2\xB5m"));
    made->setSpecialValueText(tr("unknown"));
    connect(made, &FloatSpinBox::doubleValueChanged, this, [this] {
        Q_EMIT calculateMemory();
        Q_EMIT dimensionsChanged(xDim(), yDim(), zDim());
    });
    return made;
}

QRadioButton* StackOpenExtension::radioButton(const char* name, const QString& text)
{
    auto* made = new QRadioButton(text, this);
    made->setObjectName(name);
    connect(made, &QRadioButton::toggled, this, [this](bool on) {
        toggleMaps();
        if (on)
            Q_EMIT calculateMemory();
    });
    return made;
}

QGroupBox* StackOpenExtension::layerGroup()
{
    m_first = spinBox("spnFirst", 0, 0);
    m_last = spinBox("spnLast", 0, 0);
    m_step = spinBox("spnStep", 1, 1);
    m_timeStep = spinBox("spnTimeStep", 1, 1);
    m_timeStepLabel = new QLabel(tr("&Time Step"), this);
    m_timeStepLabel->setObjectName("lblTimeStep");
    m_timeStepLabel->setBuddy(m_timeStep);
    m_subsample = spinBox("spnSubsample", 1, kMostSubsampling);
    m_conserve = new QCheckBox(tr("Conserve &Memory"), this);
    m_conserve->setObjectName("chkConserveMem");
    connect(m_conserve, &QCheckBox::toggled, this, &StackOpenExtension::calculateMemory);
    auto* group = new QGroupBox(tr("Slices"), this);
    auto* rows = new QFormLayout(group);
    rows->addRow(tr("&First Slice"), m_first);
    rows->addRow(tr("&Last Slice"), m_last);
    rows->addRow(tr("&Step"), m_step);
    rows->addRow(m_timeStepLabel, m_timeStep);
    rows->addRow(tr("S&ub sample"), m_subsample);
    rows->addRow(m_conserve);
    return group;
}

QGroupBox* StackOpenExtension::textureGroup(bool hasTexture3D)
{
    auto* group = new QGroupBox(tr("Textures"), this);
    m_resliceZ = new QCheckBox(tr("&Reslice Z"), this);
    m_resliceZ->setObjectName("chkResliceZ");
    m_zSlices = spinBox("spnZSlices", 1, kMostSlices);
    m_resliceLabel = new QLabel(tr("Z Sl&ices"), this);
    m_resliceLabel->setObjectName("txtReslice");
    m_resliceLabel->setBuddy(m_zSlices);
    m_2D = radioButton("btn2D", tr("&2D Texture Maps"));
    m_3D = radioButton("btn3D", tr("&3D Texture Maps"));
    m_3DParallel = radioButton("btn3DParallel", tr("3D Screen &Parallel"));
    m_3D->setToolTip(tr("Encode the data using 3D texture maps.  \nUsing 1/3 the memory, but renders \n"
                        "slower in most cases."));
    if (!hasTexture3D) {
        for (QWidget* widget :
             std::initializer_list<QWidget*>{m_3D, m_3DParallel, m_resliceZ, m_zSlices, m_resliceLabel})
            widget->setToolTip(tr("Sorry your video card does not support 3D texture maps."));
        m_3D->setEnabled(false);
        m_3DParallel->setEnabled(false);
    }
    m_2D->setChecked(true);
    auto* slices = new QHBoxLayout;
    slices->addWidget(m_resliceLabel);
    slices->addWidget(m_zSlices, 1);
    auto* rows = new QVBoxLayout(group);
    for (QWidget* widget : std::initializer_list<QWidget*>{m_2D, m_3D, m_3DParallel, m_resliceZ})
        rows->addWidget(widget);
    rows->addLayout(slices);
    rows->addStretch(1);
    return group;
}

QGroupBox* StackOpenExtension::voxelGroup()
{
    m_xDim = voxelBox("spnXDim");
    m_yDim = voxelBox("spnYDim");
    m_zDim = voxelBox("spnZDim");
    auto* group = new QGroupBox(tr("Voxel Dimensions"), this);
    auto* rows = new QFormLayout(group);
    rows->addRow(tr("&X"), m_xDim);
    rows->addRow(tr("&Y"), m_yDim);
    rows->addRow(tr("&Z"), m_zDim);
    return group;
}

int StackOpenExtension::first() const { return m_first->value(); }
int StackOpenExtension::last() const { return m_last->value(); }
int StackOpenExtension::step() const { return m_step->value(); }
int StackOpenExtension::timeStep() const { return m_timeStep->value(); }
int StackOpenExtension::subsample() const { return m_subsample->value(); }
bool StackOpenExtension::use3Dtex() const { return m_3D->isChecked(); }
GLenum StackOpenExtension::textureTarget() const { return use3Dtex() ? GL_TEXTURE_3D : GL_TEXTURE_2D; }
bool StackOpenExtension::uses2DMaps() const { return m_2D->isChecked(); }
bool StackOpenExtension::resliceZ() const { return use3Dtex() && m_resliceZ->isChecked(); }
int StackOpenExtension::zSlices() const { return m_zSlices->value(); }
bool StackOpenExtension::conserve() const { return m_conserve->isChecked(); }
double StackOpenExtension::xDim() const { return m_xDim->doubleValue(); }
double StackOpenExtension::yDim() const { return m_yDim->doubleValue(); }
double StackOpenExtension::zDim() const { return m_zDim->doubleValue(); }

void StackOpenExtension::reset()
{
    setRanges(1, 1);
    setDim(0, 0, 0);
    m_timeStep->setValue(1);
    m_subsample->setValue(1);
    m_resliceZ->setChecked(false);
    m_conserve->setChecked(false);
    toggleMaps();
}

void StackOpenExtension::choose3D(bool on)
{
    QRadioButton* button = on && m_3D->isEnabled() ? m_3D : m_2D;
    button->setChecked(true);
}

void StackOpenExtension::toggleMaps()
{
    for (QWidget* widget : std::initializer_list<QWidget*>{m_resliceZ, m_zSlices, m_resliceLabel})
        widget->setEnabled(use3Dtex());
}

void StackOpenExtension::showTimeStep(bool show)
{
    m_timeStep->setVisible(show);
    m_timeStepLabel->setVisible(show);
}

bool StackOpenExtension::showsTimeStep() const { return !m_timeStep->isHidden(); }

void StackOpenExtension::setRanges(int slices, int timePoints)
{
    const int count = std::max(1, slices);
    {
        const QSignalBlocker blocker(this);
        m_first->setRange(0, count - 1);
        m_first->setValue(0);
        m_last->setRange(0, count - 1);
        m_last->setValue(count - 1);
        m_step->setRange(1, count);
        m_step->setValue(1);
        m_zSlices->setValue(count);
    }
    setTimePoints(timePoints);
}

void StackOpenExtension::setTimePoints(int timePoints)
{
    m_timeStep->setRange(1, std::max(1, timePoints));
    showTimeStep(timePoints > 1);
    Q_EMIT calculateMemory();
}

void StackOpenExtension::setDim(double x, double y, double z)
{
    m_xDim->setDoubleValue(x);
    m_yDim->setDoubleValue(y);
    m_zDim->setDoubleValue(z);
}

} // namespace tirn
