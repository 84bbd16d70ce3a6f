#include "ui/view/scalebarform.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "scene/scalebar.h"
#include "ui/widgets/colourbutton.h"
#include "ui/widgets/floatspinbox.h"

namespace tirn {

namespace {

struct Corner
{
    const char* name;
    const char* text;
    ScaleBarLocation location;
};

constexpr Corner kCorners[] = {{"rdUL", "Upper Left", ScaleBarLocation::TopLeft},
                               {"rdUR", "Upper Right", ScaleBarLocation::TopRight},
                               {"rdLL", "Lower Left", ScaleBarLocation::BottomLeft},
                               {"rdLR", "Lower Right", ScaleBarLocation::BottomRight}};

/// All of the bar that is chosen here.
void copyBar(ViewState& view, const ViewState& from)
{
    view.showScaleBar = from.showScaleBar;
    view.scaleBarLocation = from.scaleBarLocation;
    view.scaleBarColor = from.scaleBarColor;
    view.scaleBarSize = from.scaleBarSize;
    view.roundScaleBar = from.roundScaleBar;
}

} // namespace

ScaleBarForm::ScaleBarForm(const FormServices& services, QWidget* parent)
    : QDialog(parent), m_model(services.model), m_before(services.model.view()),
      m_location(new QButtonGroup(this)),
      // The title is that of another colour, and stays as it is.
      m_color(new ColourButton(tr("Color"), tr("Background Color"), this)), m_size(new FloatSpinBox(this)),
      m_round(new QCheckBox(tr("Round length"), this)), m_length(new QLabel(this))
{
    setWindowTitle(tr("Scale Bar Properties"));
    m_color->setObjectName("btnColor");
    m_size->setObjectName("fspnSize");
    m_size->setDoubleLineStep(0.01);
    m_size->setDoubleRange(kLeastBarSize, kMostBarSize);
    m_size->setSingleStep(5);
    m_size->setKeyboardTracking(false);
    m_size->setToolTip(tr("Length of the scale bar; the picture is 2 wide."));
    m_round->setObjectName("chkRound");
    m_round->setToolTip(tr("Shorten the bar to a round length."));
    m_length->setObjectName("lblLength");
    buildLayout();
    // Who asks for the bar's properties wants to see it.
    change([](ViewState& view) { view.showScaleBar = true; });
    connect(m_location, &QButtonGroup::idClicked, this, [this](int id) {
        change([id](ViewState& view) { view.scaleBarLocation = static_cast<ScaleBarLocation>(id); });
    });
    connect(m_color, &ColourButton::colourChosen, this,
            [this](const QColor& color) { change([&](ViewState& view) { view.scaleBarColor = color; }); });
    connect(m_size, &FloatSpinBox::doubleValueChanged, this,
            [this](double size) { change([size](ViewState& view) { view.scaleBarSize = size; }); });
    connect(m_round, &QCheckBox::clicked, this,
            [this](bool on) { change([on](ViewState& view) { view.roundScaleBar = on; }); });
    connect(&m_model, &SceneModel::changed, this, &ScaleBarForm::showBar);
}

void ScaleBarForm::buildLayout()
{
    auto* location = new QGroupBox(tr("Location"), this);
    auto* corners = new QGridLayout(location);
    int place = 0;
    for (const Corner& corner : kCorners) {
        auto* button = new QRadioButton(tr(corner.text), location);
        button->setObjectName(corner.name);
        m_location->addButton(button, static_cast<int>(corner.location));
        corners->addWidget(button, place / 2, place % 2);
        ++place;
    }
    auto* rows = new QFormLayout;
    rows->addRow(tr("Size"), m_size);
    rows->addRow(QString(), m_round);
    rows->addRow(tr("Length"), m_length);
    rows->addRow(QString(), m_color);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("btnOk");
    buttons->button(QDialogButtonBox::Ok)->setText(tr("&Ok"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(location);
    layout->addLayout(rows);
    layout->addStretch(1);
    layout->addWidget(buttons);
}

QColor ScaleBarForm::getColor() const { return m_color->colour(); }

double ScaleBarForm::getSize() const { return m_size->doubleValue(); }

void ScaleBarForm::changeColor() { m_color->click(); }

void ScaleBarForm::showBar()
{
    const ViewState view = m_model.view();
    const QSignalBlocker silentSize(m_size);
    m_location->button(static_cast<int>(view.scaleBarLocation))->setChecked(true);
    m_color->setColour(view.scaleBarColor);
    if (!m_size->isBeingTyped() && m_size->doubleValue() != view.scaleBarSize)
        m_size->setDoubleValue(view.scaleBarSize);
    m_round->setChecked(view.roundScaleBar);
    const VoxelArray* array = m_model.scene().current();
    const QString length = array == nullptr ? tr("no stack")
                                            : scaleBarOf(view, array->geometry().maxPow(),
                                                         array->stack().dimX, array->scale.x * view.zoom)
                                                  .label.text;
    m_length->setText(length);
}

void ScaleBarForm::change(const std::function<void(ViewState&)>& change)
{
    m_model.edit(Change::Look, [&](Scene& scene) { change(scene.view); });
    showBar();
}

/// What was tried out is taken back as one step, or at once.
void ScaleBarForm::done(int result)
{
    disconnect(&m_model, nullptr, this, nullptr);
    const ViewState chosen = m_model.view();
    m_model.edit(Change::Look, [this](Scene& scene) { copyBar(scene.view, m_before); });
    if (result == Accepted)
        m_model.editUndoably(tr("scale bar"), 0, Change::Look,
                             [&](Scene& scene) { copyBar(scene.view, chosen); });
    QDialog::done(result);
}

} // namespace tirn
