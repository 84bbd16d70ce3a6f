#include "ui/stacks/stackdimensionsform.h"

#include <algorithm>

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/widgets/floatspinbox.h"
#include "ui/widgets/titleroom.h"

namespace tirn {

namespace {

constexpr double kLargestVoxel = 10000;
constexpr double kStep = 0.0001;

} // namespace

StackDimensionsForm::StackDimensionsForm(QWidget* parent)
    : QDialog(parent), m_x(spinBox("spnX")), m_y(spinBox("spnY")), m_z(spinBox("spnZ"))
{
    setObjectName("Dimensions");
    setWindowTitle(tr("Voxel Dimensions"));
    makeRoomForTitle(*this);
    auto* rows = new QFormLayout;
    rows->addRow(tr("&X"), m_x);
    rows->addRow(tr("&Y"), m_y);
    rows->addRow(tr("&Z"), m_z);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("btnOk");
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("btnCancel");
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(rows);
    layout->addStretch(1);
    layout->addWidget(buttons);
}

FloatSpinBox* StackDimensionsForm::spinBox(const char* name)
{
    auto* box = new FloatSpinBox(this);
    box->setObjectName(name);
    box->setDoubleRange(0, kLargestVoxel);
    box->setDoubleLineStep(kStep);
    box->setSuffix(tr(" µm"));
    return box;
}

void StackDimensionsForm::setDimensions(double x, double y, double z)
{
    m_x->setDoubleValue(std::max(0.0, x));
    m_y->setDoubleValue(std::max(0.0, y));
    m_z->setDoubleValue(std::max(0.0, z));
}

double StackDimensionsForm::getX() const { return m_x->doubleValue(); }

double StackDimensionsForm::getY() const { return m_y->doubleValue(); }

double StackDimensionsForm::getZ() const { return m_z->doubleValue(); }

} // namespace tirn
